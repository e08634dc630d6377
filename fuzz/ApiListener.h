#pragma once

#include <string>

#include "Norvik_2D.h"

/// Hears of the progress of a triangulation, and cancels what runs at the given call.
class ApiListener : public KELMAR_NORVIK2D::MsgBase {
public:
    static constexpr int never = -1;

    ApiListener(KELMAR_NORVIK2D::Norvik_2D& mesh_, int cancelAt_) : mesh(mesh_), cancelAt(cancelAt_) {
        mesh.subscribe(KELMAR_NORVIK2D::MSGTYPE_PROGRESS, this);
    }
    ~ApiListener() override { mesh.unsubscribe(KELMAR_NORVIK2D::MSGTYPE_PROGRESS, this); }
    ApiListener(const ApiListener&) = delete;
    ApiListener& operator=(const ApiListener&) = delete;

    void update(KELMAR_NORVIK2D::MsgType /*type*/, const std::string& /*name*/, double value) override {
        bOrderly &= value >= 0.0 && value <= 1.0;
        last = value;
        if (numCalls++ == cancelAt) mesh.requestCancel();
    }

    /// Whether what was told is a progress that came to its end.
    bool isContent() const { return numCalls == 0 || (bOrderly && last == 1.0); }

private:
    KELMAR_NORVIK2D::Norvik_2D& mesh;
    int cancelAt;
    int numCalls = 0;
    bool bOrderly = true;
    double last = 0.0;
};

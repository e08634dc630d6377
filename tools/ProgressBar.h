#pragma once

#include <MsgBase.h>

#include <string>

/// Draws the progress of an operation as a bar on standard error; the line is wiped when the operation is finished, so
/// that nothing of it is left among the output.
class ProgressBar : public KELMAR_NORVIK2D::MsgBase {
public:
    void update(KELMAR_NORVIK2D::MsgType type, const std::string& name, double value) override;
};

#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "MsgBase.h"

/// Notes the progress that is told, by the names of operations.
class ProgressListener : public KELMAR_NORVIK2D::MsgBase {
public:
    void update(KELMAR_NORVIK2D::MsgType /*type*/, const std::string& name, double value) override {
        mTold[name].push_back(value);
    }

    /// How many values there were, if nothing else was told of and they rise to 1, which comes once; otherwise 0. Where work is
    /// found on the way they may fall back, but for the last one.
    std::size_t numTold(const std::string& name, bool bRising = true) const {
        if (mTold.size() != 1 || mTold.begin()->first != name) return 0;
        const std::vector<double>& values = mTold.begin()->second;
        return (bRising ? rises(values) : endsOnce(values)) ? values.size() : 0;
    }
    static bool rises(const std::vector<double>& values) {
        return std::is_sorted(values.begin(), values.end()) && endsOnce(values);
    }
    static bool endsOnce(const std::vector<double>& values) {
        return values.back() == 1.0 && std::count(values.begin(), values.end(), 1.0) == 1;
    }

    std::map<std::string, std::vector<double>> mTold;
};

#pragma once

#include <string>

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// The kinds of message that a client can subscribe to.
enum MsgType { MSGTYPE_PROGRESS = 0 };

/// A client derives from this class to hear of progress. The library never owns a subscriber: it must live
/// until it is unsubscribed or the publisher is gone.
class NORVIK2D_EXPORT MsgBase {
public:
    MsgBase() = default;
    MsgBase(const MsgBase&) = default;
    MsgBase& operator=(const MsgBase&) = default;
    virtual ~MsgBase();

    /// Called on the thread that runs the operation `name`, about a hundred times in all; `value` rises to
    /// 1.0, which comes exactly once. It should be quick, and must not change the triangulation.
    virtual void update(MsgType type, const std::string& name, double value) = 0;
};

}  // namespace KELMAR_NORVIK2D

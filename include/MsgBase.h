#pragma once

#include "export.h"

namespace TESK_KIVO2D {

/// Kinds of messages that a listener can subscribe to.
enum MsgType {
    MSG_PROGRESS = 0 ///< progress of a long operation
};

/// Base class of listeners. The application owns the listener; the library keeps only the pointer, so
/// unsubscribe it before it dies.
class KIVO_API MsgBase {
public:
    /// A listener hears nothing until it is subscribed (`Kivo_2D::subscribe`).
    MsgBase() = default;
    MsgBase(const MsgBase&) = default;
    MsgBase& operator=(const MsgBase&) = default;
    virtual ~MsgBase();

    /// Called on the thread that performs the operation. A listener may unsubscribe itself inside the call.
    /// An exception thrown here cancels the operation: it reaches the caller of the operation, and the
    /// triangulation stays valid.
    ///
    /// While a large batch is being triangulated its points are not in yet, and those that were in before are
    /// not triangulated: `is2D()` is false until the batch is done, and insertions are refused with a
    /// warning.
    ///
    /// \param msgType  what the message is about
    /// \param label    name of the running operation, valid during the call only
    /// \param progress done share of the operation in [0, 1]; 1.0 arrives exactly once per operation
    virtual void update(MsgType msgType, const char* label, double progress) = 0;
};

} // namespace TESK_KIVO2D

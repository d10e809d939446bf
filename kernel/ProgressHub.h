#pragma once

#include "MsgBase.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

// Holds the listeners of one triangulation and the progress of its running operation. Without a listener an
// advance costs one test. An operation inside another one is silent: the outer one's progress covers it.
class ProgressHub {
public:
    explicit ProgressHub(const char* internalLabel) : label(internalLabel), operationLabel(internalLabel) {}
    ProgressHub(const ProgressHub&) = delete;
    ProgressHub& operator=(const ProgressHub&) = delete;

    void subscribe(MsgType msgType, MsgBase* pListener);
    // Removes the pair if it is there.
    void unsubscribe(MsgType msgType, MsgBase* pListener);

    // True while an operation lives: whoever asks was called by a listener, or by the operation.
    bool isBusy() const { return numOpen > 0; }

    // One operation's report. Listeners hear multiples of one hundredth of the total and exactly one 1.0:
    // from the advance that reaches the total, else from finish. Leaving the scope without finish, by an
    // exception, is silent.
    class Operation {
    public:
        // The label must outlive the operation.
        Operation(ProgressHub& hub, const char* label, std::size_t total);
        ~Operation();
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;

        void advance(std::size_t num = 1) {
            if (bReports) hub.advance(num);
        }
        void finish() {
            if (bReports) hub.finish();
        }

    private:
        ProgressHub& hub;
        bool bReports; // outermost, and somebody listens
    };

private:
    void advance(std::size_t num);
    void finish();
    void notify(double progress);

    const char* label;
    std::vector<std::pair<MsgType, MsgBase*>> vListeners; // in the order of subscription
    int numOpen = 0;                                      // nested operations
    const char* operationLabel;
    std::size_t total = 0;
    std::size_t current = 0;
    std::size_t step = 1;
    bool finished = true;
};

} // namespace TESK_KIVO2D

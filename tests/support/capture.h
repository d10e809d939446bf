#pragma once

#include "functions.h"

#include <mutex>
#include <string>

// Collects what the library says while the object lives; afterwards the standard streams are back. One at a
// time.
class CapturedMessages {
public:
    CapturedMessages() {
        TESK_KIVO2D::setMessageSink([this](TESK_KIVO2D::MessageChannel channel, const std::string& text) {
            const std::lock_guard<std::mutex> lock(mutex);
            (channel == TESK_KIVO2D::MSG_CHANNEL_ERROR ? errorText : outputText) += text;
        });
    }
    ~CapturedMessages() { TESK_KIVO2D::setMessageSink({}); }
    CapturedMessages(const CapturedMessages&) = delete;
    CapturedMessages& operator=(const CapturedMessages&) = delete;

    std::string output() const { return read(outputText); }
    std::string error() const { return read(errorText); }

private:
    std::string read(const std::string& text) const {
        const std::lock_guard<std::mutex> lock(mutex);
        return text;
    }

    mutable std::mutex mutex; // the reader may be another thread than the one that speaks
    std::string outputText;
    std::string errorText;
};

#include "kernel/messages.h"

#include "functions.h"

#include <iostream>
#include <mutex>
#include <utility>

namespace TESK_KIVO2D {
namespace {

struct Channel {
    std::mutex mutex;
    MessageSink sink; // empty: the standard streams
};

Channel& channel() {
    // Never destroyed: objects with static storage may still have something to say at exit.
    static Channel* pChannel = new Channel;
    return *pChannel;
}

void emit(MessageChannel target, const std::string& text) {
    Channel& c = channel();
    const std::lock_guard<std::mutex> lock(c.mutex);
    if (c.sink) {
        c.sink(target, text);
        return;
    }
    // Unformatted, so that no width or locale of the client's stream touches the text; flushed, so that the
    // last lines before a crash are seen.
    std::ostream& stream = target == MSG_CHANNEL_OUTPUT ? std::cout : std::cerr;
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.flush();
}

void report(const std::string& location, const char* kind, const std::string& message) {
    emit(MSG_CHANNEL_OUTPUT, "      [Kivo2D-Message] " + location + kind + message + "\n");
}

} // namespace

void reportError(const std::string& location, const std::string& message) {
    report(location, ", ERROR: ", message);
}

void reportWarning(const std::string& location, const std::string& message) {
    report(location, ", WARNING: ", message);
}

void reportInfo(const std::string& location, const std::string& message) {
    report(location, location.empty() ? "INFO: " : ", INFO: ", message);
}

void reportBanner(const std::string& text) {
    const std::string bar = std::string(71, '*') + "\n";
    emit(MSG_CHANNEL_OUTPUT, "\n" + bar + bar + std::string(15, ' ') + text + "\n" + bar + bar + "\n");
}

void printText(const std::string& text) { emit(MSG_CHANNEL_OUTPUT, text); }

void printErrorText(const std::string& text) { emit(MSG_CHANNEL_ERROR, text); }

void setMessageSink(MessageSink sink) {
    Channel& c = channel();
    const std::lock_guard<std::mutex> lock(c.mutex);
    c.sink = std::move(sink);
}

} // namespace TESK_KIVO2D

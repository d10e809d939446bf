#include "cli/messages.h"

#include <functions.h>

#include <cstdio>
#include <string>

namespace cli {

using TESK_KIVO2D::MessageChannel;

void sendMessagesToErrorStream() {
    TESK_KIVO2D::setMessageSink(
        [](MessageChannel, const std::string& text) { std::fputs(text.c_str(), stderr); });
}

QuietOutput::QuietOutput() {
    TESK_KIVO2D::setMessageSink([](MessageChannel channel, const std::string& text) {
        if (channel == TESK_KIVO2D::MSG_CHANNEL_ERROR) std::fputs(text.c_str(), stderr);
    });
}

QuietOutput::~QuietOutput() { sendMessagesToErrorStream(); }

} // namespace cli

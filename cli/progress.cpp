#include "cli/progress.h"

#include <cstdio>

#include <unistd.h>

namespace cli {

void ProgressBar::update(TESK_KIVO2D::MsgType msgType, const char* label, double progress) {
    if (msgType != TESK_KIVO2D::MSG_PROGRESS) return;
    const int percent = static_cast<int>(progress * 100.0);
    if (percent == drawnPercent && currentLabel == label) return;
    drawnPercent = percent;
    currentLabel = label;
    constexpr int WIDTH = 40;
    const std::string done(static_cast<std::size_t>(percent * WIDTH / 100), '#');
    std::fprintf(stderr, "\r[%-*s] %3d%% %s", WIDTH, done.c_str(), percent, label);
    if (percent < 100) {
        std::fflush(stderr);
        return;
    }
    std::fputc('\n', stderr);
    drawnPercent = -1;
}

bool isErrorStreamTerminal() { return isatty(STDERR_FILENO) == 1; }

} // namespace cli

#include "functions.h"

#include "kernel/messages.h"
#include "kernel/valueText.h"

#include <chrono>

namespace TESK_KIVO2D {

double timer(const std::string& label) {
    using Clock = std::chrono::steady_clock;
    // One watch a thread: no lock, and threads do not restart each other's measurement.
    thread_local bool bRunning = false;
    thread_local Clock::time_point start;

    const Clock::time_point now = Clock::now();
    const double seconds = bRunning ? std::chrono::duration<double>(now - start).count() : 0.0;
    if (!label.empty()) printText("Timer: " + label + " " + numberText(seconds) + "s\n");
    bRunning = true;
    start = Clock::now(); // writing the line is not measured
    return seconds;
}

} // namespace TESK_KIVO2D

#include "cli/Interruption.h"

namespace cli {

namespace {

std::atomic<bool> bInterrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may set no other");

extern "C" void onInterrupt(int) { bInterrupted = true; }

} // namespace

Interruption::Interruption() {
    bInterrupted = false;
    sigaction(SIGINT, nullptr, &previous);
    if (previous.sa_handler == SIG_IGN) return;
    struct sigaction action = {};
    action.sa_handler = &onInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(SIGINT, &action, nullptr);
}

Interruption::~Interruption() { sigaction(SIGINT, &previous, nullptr); }

const std::atomic<bool>* Interruption::getFlag() const { return &bInterrupted; }

} // namespace cli

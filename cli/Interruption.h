#pragma once

#include <atomic>

#include <csignal>

namespace cli {

// While one lives, the first interrupt from the keyboard sets a flag instead of ending the process; a second
// one ends it. A process that ignores interrupts goes on ignoring them. One at a time.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    const std::atomic<bool>* getFlag() const;

private:
    struct sigaction previous;
};

} // namespace cli

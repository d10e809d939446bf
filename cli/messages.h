#pragma once

namespace cli {

// Standard output holds the report and nothing else, so that a program can read it: what the library says
// goes to the error stream.
void sendMessagesToErrorStream();

// While one lives, what the library would print is dropped: figures that the report holds.
class QuietOutput {
public:
    QuietOutput();
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;
    ~QuietOutput();
};

} // namespace cli

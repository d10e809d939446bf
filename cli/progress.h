#pragma once

#include <MsgBase.h>

#include <string>

namespace cli {

// Draws the progress of the library's long operations as one line of the error stream.
class ProgressBar : public TESK_KIVO2D::MsgBase {
public:
    void update(TESK_KIVO2D::MsgType msgType, const char* label, double progress) override;

private:
    std::string currentLabel;
    int drawnPercent = -1;
};

// True when somebody looks at the error stream.
bool isErrorStreamTerminal();

} // namespace cli

#pragma once

#include <string>

namespace TESK_KIVO2D {

// The only place that knows the message prefix and the only one that writes to the standard streams. All
// functions may be called from several threads at once; a text is never torn.
//
// Lines:  six spaces, "[Kivo2D-Message] ", location, ", ERROR: " / ", WARNING: " / ", INFO: ", message,
// newline.

void reportError(const std::string& location, const std::string& message);
void reportWarning(const std::string& location, const std::string& message);
// Without a location the line holds no comma: prefix, "INFO: ", message.
void reportInfo(const std::string& location, const std::string& message);
// An empty line, two lines of 71 asterisks, the text indented by 15, two more lines of asterisks, an empty
// line.
void reportBanner(const std::string& text);

// The text as it stands, to standard output or to the error stream. No newline is added.
void printText(const std::string& text);
void printErrorText(const std::string& text);

} // namespace TESK_KIVO2D

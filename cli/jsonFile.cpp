#include "cli/jsonFile.h"

#include "cli/errors.h"
#include "cli/textLines.h"

#include <algorithm>

namespace cli {

namespace {

using Json = nlohmann::json;

// Passes over everything but the error. The parser tells its place to listeners only.
class ErrorFinder : public nlohmann::json_sax<Json> {
public:
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t&) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t position, const std::string& token, const Json::exception& error) override {
        numRead = position;
        reason = dynamic_cast<const Json::out_of_range*>(&error) == nullptr
                     ? "no JSON: " + reasonOf(error.what())
                     : inQuotes(token) + " is out of the range of a double";
        return false;
    }

    std::size_t numRead = 0; // bytes up to the end of what is wrong
    std::string reason;

private:
    // What stands between the place, which is told in our way, and a copy of the input, which may be long.
    static std::string reasonOf(const std::string& text) {
        const std::size_t start = text.find(" - ");
        if (start == std::string::npos) return text;
        const std::string reason = text.substr(start + 3);
        return reason.substr(0, reason.find("; last read: "));
    }
};

} // namespace

Json readJson(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    Json document = Json::parse(content, nullptr, false);
    if (!document.is_discarded()) return document;
    ErrorFinder finder;
    Json::sax_parse(content, &finder);
    const auto end = content.begin() + static_cast<std::ptrdiff_t>(std::min(finder.numRead, content.size()));
    throw FileError(filename, 1 + static_cast<std::size_t>(std::count(content.begin(), end, '\n')),
                    finder.reason);
}

} // namespace cli

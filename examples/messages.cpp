// Leads everything that the library would print into a log of the application's own.
#include <Kivo_2D.h>

#include <iostream>
#include <limits>
#include <string>
#include <vector>

int main() {
    using namespace TESK_KIVO2D;
    // Calls of the sink never overlap, so it needs no lock against other threads that use the library.
    std::vector<std::string> vLog;
    int numErrors = 0;
    setMessageSink([&](MessageChannel, const std::string& text) {
        vLog.push_back(text);
        if (text.find("ERROR") != std::string::npos) ++numErrors;
    });

    Kivo_2D triangulation;
    const double infinity = std::numeric_limits<double>::infinity();
    triangulation.insert(std::vector<Point2>{{0, 0}, {1, 0}, {infinity, 0}, {0, 1}});
    std::vector<Segment2> vNone;
    triangulation.createConstraint(vNone);
    triangulation.checkValidity(true, "after the insertion");
    setMessageSink({}); // the standard streams again; the sink must not outlive what it refers to

    std::cout << vLog.size() << " messages, " << numErrors << " of them errors:\n";
    for (const std::string& text : vLog)
        std::cout << text;

    setMessageSink([](MessageChannel, const std::string&) {}); // silence
    triangulation.checkValidity(true, "in silence");
    setMessageSink({});
    std::cout << "the log still has " << vLog.size() << " messages\n";
}

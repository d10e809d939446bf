// A long insertion that tells how far it is, and another one that the user cancels.
#include <Kivo_2D.h>

#include <iostream>
#include <stdexcept>
#include <vector>

using namespace TESK_KIVO2D;

// Prints a line for each quarter.
class ProgressBar : public MsgBase {
public:
    void update(MsgType, const char* label, double progress) override {
        while (nextQuarter <= 4 * progress)
            std::cout << label << ": " << 25 * nextQuarter++ << " %\n";
    }

private:
    int nextQuarter = 1;
};

// Stands for a button that somebody presses when half is done. What a listener throws ends the operation and
// reaches its caller.
class CancelButton : public MsgBase {
public:
    void update(MsgType, const char*, double progress) override {
        if (progress >= 0.5) throw std::runtime_error("cancelled by the user");
    }
};

int main() {
    std::vector<Point2> vPoints;
    generateRandomPoints(100000, 0.0, 1000.0, vPoints, 7);

    Kivo_2D complete;
    ProgressBar bar;
    complete.subscribe(MSG_PROGRESS, &bar);
    complete.insert(vPoints);
    complete.unsubscribe(MSG_PROGRESS, &bar); // before the listener dies

    Kivo_2D partial;
    CancelButton button;
    partial.subscribe(MSG_PROGRESS, &button);
    try {
        partial.insert(vPoints);
    } catch (const std::runtime_error& reason) {
        std::cout << reason.what() << '\n';
    }
    partial.unsubscribe(MSG_PROGRESS, &button);

    // What was inserted until then is a triangulation like any other, and can be completed.
    const bool bSmaller = partial.numberOfPoints() < complete.numberOfPoints();
    std::cout << "fewer points: " << (bSmaller ? "yes" : "no") << '\n';
    if (!partial.checkValidity(true, "half")) return 1;
    partial.insert(vPoints);
    const bool bEqual = partial.numberOfPoints() == complete.numberOfPoints();
    std::cout << "completed: " << (bEqual ? "yes" : "no") << '\n';
}

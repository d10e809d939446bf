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

    Kivo_2D cancelled;
    CancelButton button;
    cancelled.subscribe(MSG_PROGRESS, &button);
    try {
        cancelled.insert(vPoints);
    } catch (const std::runtime_error& reason) {
        std::cout << reason.what() << '\n';
    }
    cancelled.unsubscribe(MSG_PROGRESS, &button);

    // A large batch goes in as a whole or not at all, so nothing has changed; it can be tried again.
    std::cout << "points after that: " << cancelled.numberOfPoints() << '\n';
    cancelled.insert(vPoints);
    const bool bEqual = cancelled.numberOfPoints() == complete.numberOfPoints();
    std::cout << "completed: " << (bEqual ? "yes" : "no") << '\n';
}

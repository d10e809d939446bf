// Two objects in two threads: what they share must be safe. Run under a thread sanitizer.
#include "Kivo_2D.h"

#include "core/Dt2.h"
#include "kernel/intersection.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <thread>

using namespace TESK_KIVO2D;

namespace {

struct Outcome {
    std::size_t numTriangles = 0;
    bool bValid = false;
    double x = 0, y = 0;
    std::string drawing;
};

// A whole triangulation with near-degenerate input, so that the exact stages run, by chunks in threads of its
// own, and everything that holds state of the process: messages, drawings, colours, the free predicates, the
// shared rationals, the timer.
Outcome wholeTriangulation(const std::string& file) {
    Outcome outcome;
    doubles::Rng rng(5);
    Kivo_2D kivo(10);
    kivo.setNumCPU(2);
    kivo.getImpl()->setBatchLimits(1000, 300);
    std::vector<Point2> v;
    for (int i = 0; i < 3000; ++i) {
        v.emplace_back(doubles::below(rng, 40), doubles::below(rng, 40));
        const Point2 base(doubles::below(rng, 40) * 0.1, 1e-9 * doubles::below(rng, 5));
        v.push_back(doubles::jittered(rng, base, 1));
    }
    kivo.insert(v);
    for (int i = 0; i < 300; ++i)
        kivo.insert(Point2(doubles::uniform(rng), doubles::uniform(rng)));
    for (int i = 0; i < 300; ++i) {
        const doubles::Points p = doubles::nearCollinear(rng);
        EXPECT_EQ(getOrientation2(&p[0], &p[1], &p[2]), getOrientation2_mt(&p[0], &p[1], &p[2]));
        getIntersectionCoords(p[0], p[1], Point2(-9, 1), Point2(9, 2), outcome.x, outcome.y);
    }
    {
        Visualizer2 vis(file);
        kivo.show(&vis);
        vis.addObject(Circle2(1, 1, 4), Color(CRED));
        vis.addObject(Label(Point2(1, 1), "label", true, 9),
                      Color(Color::getNextColorName()) == Color(CRED) ? Color(CRED) : Color(CBLACK));
        vis.writeFile();
    }
    timer("");
    outcome.numTriangles = kivo.numberOfTriangles();
    outcome.bValid = kivo.checkValidity(true, "thread");
    kivo.statistics("thread");
    std::ifstream stream(file, std::ios::binary);
    outcome.drawing.assign(std::istreambuf_iterator<char>(stream), {});
    return outcome;
}

} // namespace

TEST(threads, twoTriangulationsDoNotTouchEachOther) {
    const CapturedMessages messages;
    Outcome outcomes[2];
    {
        std::thread first([&] { outcomes[0] = wholeTriangulation("threadA.ps"); });
        std::thread second([&] { outcomes[1] = wholeTriangulation("threadB.ps"); });
        first.join();
        second.join();
    }
    const Outcome alone = wholeTriangulation("threadC.ps");
    for (const Outcome& outcome : outcomes) {
        EXPECT_TRUE(outcome.bValid);
        EXPECT_EQ(alone.numTriangles, outcome.numTriangles);
        EXPECT_EQ(alone.x, outcome.x);
        EXPECT_EQ(alone.y, outcome.y);
        // Apart from the file's name the drawings are the same, whatever the other thread drew.
        std::string drawing = outcome.drawing;
        for (std::size_t at = 0; (at = drawing.find("thread", at)) != std::string::npos; ++at)
            drawing[at + 6] = 'C';
        EXPECT_GT(drawing.size(), 10000u);
        EXPECT_EQ(alone.drawing, drawing);
    }
}

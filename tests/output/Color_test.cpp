#include "Color.h"

#include "tests/support/capture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <thread>
#include <vector>

using namespace TESK_KIVO2D;

namespace {

void expectRgb(Colorname name, float r, float g, float b) {
    const Color color(name, 2.5F, true);
    EXPECT_EQ(r, color.r) << name;
    EXPECT_EQ(g, color.g) << name;
    EXPECT_EQ(b, color.b) << name;
    EXPECT_EQ(2.5F, color.width);
    EXPECT_TRUE(color.bFill);
}

} // namespace

// Each test here goes round whole cycles, for the cycle is the process's own.
TEST(Color, nextNamesRunFrom1To14ForEver) {
    for (int i = 0; i < 42; ++i)
        EXPECT_EQ(i % 14 + 1, Color::getNextColorName());
}

TEST(Color, nextNamesAreFairBetweenThreads) {
    constexpr int rounds = 1000;
    std::vector<int> vCounts(15 * 4);
    std::vector<std::thread> vThreads;
    for (std::size_t t = 0; t < 4; ++t)
        vThreads.emplace_back([&vCounts, t] {
            for (int i = 0; i < 14 * rounds; ++i)
                ++vCounts[15 * t + static_cast<std::size_t>(Color::getNextColorName())];
        });
    for (std::thread& thread : vThreads)
        thread.join();
    for (std::size_t name = 1; name < 15; ++name)
        EXPECT_EQ(4 * rounds, vCounts[name] + vCounts[15 + name] + vCounts[30 + name] + vCounts[45 + name]);
}

TEST(Color, namedColorsHaveTheirComponents) {
    expectRgb(CRED, 1, 0, 0);
    expectRgb(CGREEN, 0, 1, 0);
    expectRgb(CBLUE, 0, 0, 1);
    expectRgb(CBLACK, 0, 0, 0);
    expectRgb(CPINK, 1, 0.4F, 0.7F);
    expectRgb(CGRAY, 0.3F, 0.3F, 0.3F);
    expectRgb(CORANGE, 1, 0.627F, 0);
    expectRgb(CLIGHTBLUE, 0, 0.749F, 1);
    expectRgb(CLIGHTBROWN, 0.823F, 0.705F, 0.549F);
    expectRgb(CDARKBROWN, 0.545F, 0.271F, 0.074F);
    expectRgb(CPURPLE, 0.627F, 0.125F, 0.941F);
    expectRgb(COLIVE, 0.5F, 0.5F, 0);
    expectRgb(CLAWNGREEN, 0.49F, 0.99F, 0);
    expectRgb(CPALEGREEN, 0.6F, 0.98F, 0.6F);
    expectRgb(CCYAN, 0, 1, 1);
    expectRgb(CYELLOW, 1, 1, 0);
    expectRgb(CWHITE, 1, 1, 1);
}

TEST(Color, unknownNameGivesBlackOfThatWidthAndOneErrorLine) {
    CapturedMessages messages;
    EXPECT_EQ(Color(0, 0, 0, 3, true), Color(static_cast<Colorname>(17), 3, true));
    EXPECT_EQ("      [Kivo2D-Message] Color::Color, ERROR: Colorname unknown, returning black\n",
              messages.output());
    EXPECT_EQ(Color(), Color(static_cast<Colorname>(-1)));
}

TEST(Color, equalityAndOrderLookAtEveryField) {
    const Color base(0.5, 0.5, 0.5, 0.5, false);
    const Color aLarger[] = {{0.6, 0, 0, 0, false},
                             {0.5, 0.6, 0, 0, false},
                             {0.5, 0.5, 0.6, 0, false},
                             {0.5, 0.5, 0.5, 0.6, false},
                             {0.5, 0.5, 0.5, 0.5, true}};
    for (const Color& larger : aLarger) {
        EXPECT_TRUE(base != larger && !(base == larger));
        EXPECT_TRUE(base < larger && !(larger < base));
    }
    EXPECT_TRUE(base == Color(base) && !(base < base));
    EXPECT_EQ(0.1F, Color(0.1, 0, 0, 0, false).r); // a double is stored as the nearest float
}

TEST(Color, componentsThatAreNoNumbersDoNotBreakAMap) {
    std::map<Color, int> mColors;
    const double values[] = {std::nan(""), 1, 0, std::nan("")};
    for (const double r : values)
        for (const double g : values)
            ++mColors[Color(r, g, 0, 0, false)];
    EXPECT_EQ(9U, mColors.size());
}

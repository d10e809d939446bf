#include "kernel/ProgressHub.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

using namespace TESK_KIVO2D;

namespace {

struct Listener : MsgBase {
    std::vector<double> vHeard;
    std::string lastLabel;
    std::function<void()> then = [] {};

    void update(MsgType, const char* label, double progress) override {
        vHeard.push_back(progress);
        lastLabel = label;
        then();
    }
};

std::vector<double> heard(std::size_t total, std::size_t stride) {
    ProgressHub hub("hub");
    Listener listener;
    hub.subscribe(MSG_PROGRESS, &listener);
    ProgressHub::Operation operation(hub, "work", total);
    for (std::size_t i = 0; i < total; i += stride)
        operation.advance(stride);
    operation.finish();
    return listener.vHeard;
}

} // namespace

TEST(ProgressHub, reportsEachHundredthAndExactlyOneOne) {
    std::vector<double> vExpected;
    for (int i = 1; i <= 100; ++i)
        vExpected.push_back(i * 10 / 1000.0);
    EXPECT_EQ(vExpected, heard(1000, 1));
    EXPECT_EQ((std::vector<double>{1 / 3.0, 2 / 3.0, 1}), heard(3, 1));
    EXPECT_EQ((std::vector<double>{1}), heard(0, 1));
    // A stride that jumps over multiples of the step reports when one was passed, and never more than 1.
    EXPECT_EQ((std::vector<double>{0.35, 0.7, 1}), heard(1000, 350));
    EXPECT_EQ(21 / 2000.0, heard(2000, 7)[0]);
    EXPECT_EQ(42 / 2000.0, heard(2000, 7)[1]);
    for (const std::size_t total : {1u, 99u, 101u, 12345u}) {
        const auto v = heard(total, 1);
        EXPECT_EQ(1, std::count(v.begin(), v.end(), 1.0));
        EXPECT_EQ(1.0, v.back());
        EXPECT_TRUE(std::is_sorted(v.begin(), v.end()));
    }
}

TEST(ProgressHub, keepsAnInnerOperationSilent) {
    ProgressHub hub("hub");
    Listener listener;
    hub.subscribe(MSG_PROGRESS, &listener);
    ProgressHub::Operation outer(hub, "outer", 2);
    outer.advance();
    {
        ProgressHub::Operation inner(hub, "inner", 10);
        inner.advance(10);
        inner.finish();
    }
    outer.advance();
    EXPECT_EQ((std::vector<double>{0.5, 1}), listener.vHeard);
    EXPECT_EQ("outer", listener.lastLabel);
}

TEST(ProgressHub, survivesListenersThatLeaveInsideTheirUpdate) {
    ProgressHub hub("hub");
    Listener first, second;
    hub.subscribe(MSG_PROGRESS, &first);
    hub.subscribe(MSG_PROGRESS, &second);
    first.then = [&] {
        hub.unsubscribe(MSG_PROGRESS, &first);
        hub.unsubscribe(MSG_PROGRESS, &second);
    };
    ProgressHub::Operation operation(hub, "work", 3);
    operation.advance();
    operation.advance();
    operation.finish();
    EXPECT_EQ(1u, first.vHeard.size());
    EXPECT_TRUE(second.vHeard.empty());
    hub.unsubscribe(MSG_PROGRESS, &second); // was never there any more
}

TEST(ProgressHub, isReadyAgainAfterAListenerThrew) {
    ProgressHub hub("hub");
    Listener listener;
    hub.subscribe(MSG_PROGRESS, &listener);
    listener.then = [] { throw 1; };
    try {
        ProgressHub::Operation operation(hub, "work", 10);
        operation.advance();
        FAIL();
    } catch (int) {
    }
    listener.then = [] {};
    ProgressHub::Operation operation(hub, "next", 1);
    operation.advance();
    operation.finish();
    EXPECT_EQ((std::vector<double>{0.1, 1}), listener.vHeard);
}

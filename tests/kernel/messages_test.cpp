#include "kernel/messages.h"

#include "KivoException.h"
#include "kernel/assertion.h"
#include "tests/support/capture.h"

#include <gtest/gtest.h>

#include <string>

using namespace TESK_KIVO2D;

TEST(messages, haveTheirFixedForms) {
    const CapturedMessages messages;
    reportError("A::b()", "e");
    reportWarning("A::b()", "w");
    reportInfo("A::b()", "i");
    reportInfo("", "i");
    reportBanner("text");
    printErrorText("err");
    const std::string bar(71, '*');
    EXPECT_EQ("      [Kivo2D-Message] A::b(), ERROR: e\n"
              "      [Kivo2D-Message] A::b(), WARNING: w\n"
              "      [Kivo2D-Message] A::b(), INFO: i\n"
              "      [Kivo2D-Message] INFO: i\n"
              "\n" +
                  bar + "\n" + bar + "\n               text\n" + bar + "\n" + bar + "\n\n",
              messages.output());
    EXPECT_EQ("err", messages.error());
}

TEST(messages, goToTheStandardStreamsUnlessRedirected) {
    setMessageSink({});
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    reportInfo("x", "y");
    printErrorText("z");
    EXPECT_EQ("      [Kivo2D-Message] x, INFO: y\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ("z", testing::internal::GetCapturedStderr());
}

TEST(messages, ofAFailedAssertionNameConditionSourceAndLine) {
    const CapturedMessages messages;
    const int line = __LINE__ + 1;
    EXPECT_THROW(KIVO_ASSERT(1 + 1 == 3, "1+1==3"), KivoException);
    EXPECT_EQ("      [Kivo2D-Message] Kivo, , ERROR: Condition [ 1+1==3 failed ]\n      messages_test.cpp:" +
                  std::to_string(line) + "\n",
              messages.output());
    EXPECT_NO_THROW(KIVO_ASSERT(true, "true"));
    EXPECT_STREQ(
        "\n  KIVO EXCEPTION due to a bug _or_ wrong usage of Kivo. If you think it is a \n  bug then please "
        "report this incident and it will be fixed quickly: the issue tracker of the project",
        KivoException().what());
}

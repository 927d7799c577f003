#include "foundation/trMessages.h"
#include "foundation/trString.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Captured {
    std::string kind;
    std::string text;
    bool hadData = false;
};
std::vector<Captured> captured;

void OnError(char const *text, trErrorWarningData *data)
{
    captured.push_back({"error", text, data != nullptr});
    if (data)
        data->result = 7;
}
void OnWarning(char const *text, trErrorWarningData *data) { captured.push_back({"warning", text, data != nullptr}); }
void OnInfo(char const *text, trErrorWarningData *data) { captured.push_back({"info", text, data != nullptr}); }

long openedContexts = 0;
std::vector<long> closed;
long OnSetupContext(trBase const *, trString const *) { return ++openedContexts + 100; }
void OnClearContext(long handle) { closed.push_back(handle); }

// Restores the global hooks whatever a test does with them.
class MessagesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        captured.clear();
        closed.clear();
        openedContexts = 0;
        trCallBackError = OnError;
        trCallBackWarning = OnWarning;
        trCallBackInfoMsg = OnInfo;
    }
    void TearDown() override
    {
        trCallBackError = trCallBackWarning = trCallBackInfoMsg = nullptr;
        trCallBackSetupErrorsWarningsContext = nullptr;
        trCallBackClearErrorsWarningsContext = nullptr;
        trDoDlgBoxes = 1;
    }
};

} // namespace

TEST_F(MessagesTest, ConsoleLinesCarryTheirPrefixesAndStreams)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    trOutMsg("ReadSGI: plain");
    trOutWarning(trString("AddParticle: careful"));
    trOutError("Load: broken");
    std::string out = testing::internal::GetCapturedStdout();
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(out, "ReadSGI: plain\nWarning: AddParticle: careful\n");
    EXPECT_EQ(err, "ERROR: Load: broken\n");
    EXPECT_TRUE(captured.empty()) << "console-only functions must not reach the host";
}

TEST_F(MessagesTest, UserMessagesReachTheMatchingCallbackWithTheirData)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    trErrorWarningData data;
    trError("Render: no camera", &data);
    trWarning(trString("Render: slow"));
    trInfoMsg("Render: done");
    testing::internal::GetCapturedStdout();
    std::string err = testing::internal::GetCapturedStderr();
    ASSERT_EQ(captured.size(), 3u);
    EXPECT_EQ(captured[0].kind, "error");
    EXPECT_EQ(captured[0].text, "Render: no camera");
    EXPECT_TRUE(captured[0].hadData);
    EXPECT_EQ(data.result, 7) << "the caller reads what the callback filled";
    EXPECT_EQ(captured[1].kind, "warning");
    EXPECT_FALSE(captured[1].hadData);
    EXPECT_EQ(captured[2].kind, "info");
    EXPECT_EQ(err, "ERROR: Render: no camera\n");
}

TEST_F(MessagesTest, DialogsOffMeansConsoleOnly)
{
    trDoDlgBoxes = 0;
    testing::internal::CaptureStderr();
    trError("Render: quiet");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: Render: quiet\n");
    EXPECT_TRUE(captured.empty());
}

TEST_F(MessagesTest, NoCallbackClearsTheResult)
{
    trCallBackError = nullptr;
    trErrorWarningData data;
    data.result = 5;
    testing::internal::CaptureStderr();
    trError("Render: nobody listens", &data);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(data.result, 0);
}

TEST_F(MessagesTest, ScopedContextOpensAndClosesThroughTheHost)
{
    EXPECT_EQ(trSetupErrorsWarningsContext(nullptr, nullptr), 0) << "no callback gives handle 0";
    {
        trScopedErrorsWarningsContext unset(nullptr, nullptr);
    }
    EXPECT_TRUE(closed.empty());

    trCallBackSetupErrorsWarningsContext = OnSetupContext;
    trCallBackClearErrorsWarningsContext = OnClearContext;
    {
        trScopedErrorsWarningsContext outer(nullptr, nullptr);
        {
            trScopedErrorsWarningsContext inner(nullptr, nullptr);
        }
        ASSERT_EQ(closed.size(), 1u);
        EXPECT_EQ(closed[0], 102);
    }
    ASSERT_EQ(closed.size(), 2u);
    EXPECT_EQ(closed[1], 101);
}

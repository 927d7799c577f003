#include "foundation/trMessages.h"
#include "foundation/trString.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// "kind|text|data" for each message the host received.
std::vector<std::string> captured;
void Capture(char const *kind, char const *text, trErrorWarningData *data)
{
    captured.push_back(std::string(kind) + "|" + text + (data ? "|data" : "|"));
}
void OnError(char const *text, trErrorWarningData *data)
{
    Capture("error", text, data);
    if (data)
        data->result = 7;
}
void OnWarning(char const *text, trErrorWarningData *data) { Capture("warning", text, data); }
void OnInfo(char const *text, trErrorWarningData *data) { Capture("info", text, data); }

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

TEST_F(MessagesTest, ConsoleLinesAndCallbacks)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    trOutMsg("ReadSGI: plain");
    trOutWarning(trString("AddParticle: careful"));
    trOutError("Load: broken");
    EXPECT_TRUE(captured.empty()) << "console-only functions must not reach the host";
    trErrorWarningData data;
    trError("Render: no camera", &data);
    trWarning(trString("Render: slow"));
    trInfoMsg("Render: done");
    // Dialogs off means console only; no callback clears the result.
    trDoDlgBoxes = 0;
    trError("Render: quiet");
    trDoDlgBoxes = 1;
    trCallBackError = nullptr;
    trErrorWarningData unheard;
    unheard.result = 5;
    trError("Render: nobody listens", &unheard);
    std::string const out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("ReadSGI: plain\nWarning: AddParticle: careful\n", 0), 0u) << out;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: Load: broken\nERROR: Render: no camera\n"
                                                      "ERROR: Render: quiet\nERROR: Render: nobody listens\n");
    EXPECT_EQ(captured, std::vector<std::string>({"error|Render: no camera|data", "warning|Render: slow|",
                                                  "info|Render: done|"}));
    EXPECT_EQ(data.result, 7) << "the caller reads what the callback filled";
    EXPECT_EQ(unheard.result, 0);
}

TEST_F(MessagesTest, ScopedContextOpensAndClosesThroughTheHost)
{
    EXPECT_EQ(trSetupErrorsWarningsContext(nullptr, nullptr), 0) << "no callback gives handle 0";
    trScopedErrorsWarningsContext(nullptr, nullptr); // opens and closes nothing
    EXPECT_TRUE(closed.empty());

    trCallBackSetupErrorsWarningsContext = OnSetupContext;
    trCallBackClearErrorsWarningsContext = OnClearContext;
    {
        trScopedErrorsWarningsContext outer(nullptr, nullptr);
        trScopedErrorsWarningsContext(nullptr, nullptr); // an inner one, closed at once
        EXPECT_EQ(closed, std::vector<long>{102});
    }
    EXPECT_EQ(closed, std::vector<long>({102, 101}));
}

#include "foundation/trCores.h"
#include "foundation/trSystemTime.h"
#include "foundation/trHostServices.h"
#include "foundation/trString.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>

TEST(trCores, DetectsTheAffinityMaskAndOverrideBeatsPreferenceWhichBeatsDetection)
{
    cpu_set_t set;
    CPU_ZERO(&set);
    ASSERT_EQ(sched_getaffinity(0, sizeof(set), &set), 0);
    bool ok = false;
    int const detected = trDetectedNumCores(ok);
    EXPECT_TRUE(detected == CPU_COUNT(&set) && ok && detected >= 1);

    EXPECT_EQ(trNumCoresToUse(ok), detected);

    trSetPreferredNumCores(true, 3);
    ok = false;
    EXPECT_TRUE(trNumCoresToUse(ok) == 3 && ok);

    // Not clamped here: the caller must bound it by trMaxThreads.
    trSetFinalOverrideNumCores(true, 1000);
    EXPECT_EQ(trNumCoresToUse(), 1000);
    EXPECT_EQ(trMaxThreads(), std::max(256, 16 * detected)) << "overrides must not change table sizes";

    trSetFinalOverrideNumCores(false, 1000);
    EXPECT_EQ(trNumCoresToUse(), 3);
    trSetPreferredNumCores(false, 3);
    EXPECT_EQ(trNumCoresToUse(), detected);
}

TEST(trSystemTime, MeasuresElapsedMillisecondsAddsTimeAndHostChecks)
{
    trSystemTime start;
    start.StartTiming();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    trSystemTime end;
    end.GetTheCurrentTime();
    EXPECT_TRUE(start.DeltaTime(end) >= 29 && start.DeltaTime(end) < 5000) << start.DeltaTime(end);

    trSystemTime t;
    t.AddTime(5, trTimebaseMilliseconds);
    t.AddTime(2, trTimebaseSeconds);
    t.AddTime(1, trTimebaseMinutes);
    EXPECT_EQ(t.Milliseconds(), 62005);
    t.AddTime(7, trTimebase(9));
    EXPECT_EQ(t.Milliseconds(), 62005) << "unknown time bases do nothing";

    testing::internal::CaptureStdout();
    long reported = start.ReportElapsedTime(trString("Render"));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_GE(reported, 29);
    EXPECT_TRUE(out.rfind("Render ", 0) == 0 && out.find(" ms\n") != std::string::npos) << out;

    trString stamp = trTimestamp();
    EXPECT_EQ(stamp.length, 19) << stamp.chars;

    char path[] = "/tmp/ostrel_exists_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    EXPECT_TRUE(trCheckFileExists(trString(path)));
    std::remove(path);
    EXPECT_FALSE(trCheckFileExists(trString(path)) || trCheckFileExists(trString("")));
    EXPECT_FALSE(trCheckFileExists(trString("/tmp"))) << "a folder is not a file";
}

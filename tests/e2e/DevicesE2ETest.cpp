#include "support/PulseServer.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

namespace {

TEST(DevicesE2ETest, PrivateServerHasTheTurntableSink) {
    PulseServer server;
    ASSERT_TRUE(server.IsRunning()) << server.Error();
    EXPECT_NE(RunCommand("pactl list short sinks").find("turntable"), std::string::npos);
}

} // namespace

// The command wrapper: a run-time error ends the command with the run time's
// message and the program goes on.
#include <gtest/gtest.h>

#include "runtime/run_time_error.h"
#include "shell/command.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

TEST(RunCommand, ShowsNumberBlankLineAndDescriptionAndReportsFailure) {
  test::TestProgram t;
  t.host.SetBusy(true);
  bool ok = RunCommand(t.p, [] { ThrowOverflow(); });
  EXPECT_FALSE(ok);
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Run-time error '6':\r\n\r\nOverflow");
  EXPECT_FALSE(t.host.busy) << "an error must not leave the hourglass on";
}

TEST(RunCommand, LeavesOtherExceptionsAndCleanRunsAlone) {
  test::TestProgram t;
  EXPECT_TRUE(RunCommand(t.p, [] {}));
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_THROW(RunCommand(t.p, [] { throw test::ScriptExhausted(); }), test::ScriptExhausted);
}

}  // namespace
}  // namespace bw

#include "rejectsfile.h"

#include <gtest/gtest.h>

namespace kd_tool {

using kd_lib::exchange::Reject;
using kd_lib::exchange::RejectAction;

TEST(RejectLine, HoldsEveryMember)
{
    const Reject reject = {{"old/people.dbf", 17, "BALANCE", 4711}, "**\xFF", "not a number", RejectAction::Skip};
    EXPECT_EQ(rejectLine(reject), "{\"file\":\"old/people.dbf\",\"record\":17,\"offset\":4711,\"column\":\"BALANCE\","
                                  "\"bytes\":\"2a2aff\",\"reason\":\"not a number\",\"action\":\"skip\"}\n");
}

TEST(RejectLine, MembersThatDoNotApplyAreNull)
{
    const Reject reject = {{"a", 0, "", {}}, "", "x", RejectAction::Null};
    EXPECT_EQ(rejectLine(reject), "{\"file\":\"a\",\"record\":null,\"offset\":null,\"column\":null,\"bytes\":\"\","
                                  "\"reason\":\"x\",\"action\":\"null\"}\n");
}

TEST(RejectLine, NamesAreValidJsonWhateverTheyHold)
{
    const Reject reject = {{"a\"\\\n\xFF\xC3\xBC", 1, "\x01", {}}, "", "", RejectAction::Replace};
    EXPECT_EQ(rejectLine(reject),
              "{\"file\":\"a\\\"\\\\\\u000a\xEF\xBF\xBD\xC3\xBC\",\"record\":1,\"offset\":null,\"column\":\"\\u0001\","
              "\"bytes\":\"\",\"reason\":\"\",\"action\":\"replace\"}\n");
}

}  // namespace kd_tool

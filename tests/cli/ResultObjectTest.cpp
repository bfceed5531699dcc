#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

#include "cli/resultObject.h"
#include "cli/tellResult.h"
#include "json/tree/dataWithJSONObject.h"

namespace kestrav {
namespace {

UpdateResult confirmed() {
    UpdateResult result;
    result.disk = "sdb";
    result.serial = "K-1";
    result.port = "1-2.3";
    result.firstBlock = 1536;
    result.bytes = 200000;
    result.verified = true;
    result.taken = std::chrono::duration<double>(0.123456);
    result.answer = "Wrote 200000 bytes.";
    return result.endedWith(ExitCode::success, "The image is on sdb.");
}

TEST(ResultObject, HasEveryMember) {
    EXPECT_EQ(dataWithJSONObject(resultObject(confirmed())),
              R"({"disk":"sdb","serial":"K-1","port":"1-2.3","firstBlock":1536,"bytes":200000,"verified":true,)"
              R"("seconds":0.123,"answer":"Wrote 200000 bytes.","status":0,"problem":null})");
}

TEST(ResultObject, SaysNullForWhatIsNotThere) {
    const UpdateResult nothing = UpdateResult().endedWith(ExitCode::failure, "No accessory.", "Plug it in.");
    EXPECT_EQ(dataWithJSONObject(resultObject(nothing)),
              R"({"disk":null,"serial":null,"port":null,"firstBlock":null,"bytes":null,"verified":false,)"
              R"("seconds":0,"answer":null,"status":1,"problem":"No accessory. Plug it in."})");
}

TEST(ResultObject, IsTextWhateverASerialNumberHolds) {
    UpdateResult result = confirmed();
    result.serial = "\xff\"";
    EXPECT_NE(dataWithJSONObject(resultObject(result)).find("\"serial\":\"\uFFFD\\\"\""), std::string::npos)
        << dataWithJSONObject(resultObject(result));
}

TEST(TellResult, GivesStandardOutputOneObjectAndStandardErrorTheProblem) {
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(tellResult(confirmed(), true, {out, err}), ExitCode::success);
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(std::ranges::count(out.str(), '\n'), 1);
    EXPECT_EQ(tellResult(confirmed().endedWith(ExitCode::wentWrong, "No."), true, {out, err}), ExitCode::wentWrong);
    EXPECT_EQ(err.str(), "kestravctl: No.\n");
    EXPECT_EQ(std::ranges::count(out.str(), '\n'), 2);
}

}  // namespace
}  // namespace kestrav

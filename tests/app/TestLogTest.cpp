#include <gtest/gtest.h>

#include <string>

#include "app/TestLog.h"
#include "support/TempDirectory.h"

TEST(TestLog, EscapesControlBytesQuotesAndBackslashesAndWritesEachValueKind) {
  EXPECT_EQ(TestLog::escapeJsonString("a\tb\x01"
                                      "c"),
            "a\\tb\\u0001c");
  EXPECT_EQ(TestLog::escapeJsonString("\"q\" \\ \n\r"), "\\\"q\\\" \\\\ \\n\\r");
  EXPECT_EQ(TestLog::escapeJsonString(std::string("\x00\x1f\x7f", 3)), "\\u0000\\u001f\x7f");
  // Bytes above 127 are copied as they are: UTF-8 text stays readable.
  EXPECT_EQ(TestLog::escapeJsonString("caf\xc3\xa9"), "caf\xc3\xa9");

  // Each kind of value in its JSON form.
  EXPECT_EQ(TestLog::valueToJson(std::string("x\ty")), "\"x\\ty\"");
  EXPECT_EQ(TestLog::valueToJson(-42LL), "-42");
  EXPECT_EQ(TestLog::valueToJson(18446744073709551615ULL), "18446744073709551615");
  EXPECT_EQ(TestLog::valueToJson(0.1), "0.10000000000000001");  // precision 17 round-trips a double
  EXPECT_EQ(TestLog::valueToJson(true), "true");
  EXPECT_EQ(TestLog::valueToJson(false), "false");
}

TEST(TestLog, LogsNothingUntilOpenedAndStaysOffOnAPathThatCantBeOpened) {
  TempDirectory directory;
  TestLog::close();
  EXPECT_FALSE(TestLog::isEnabled());
  TestLog::log("early", {{"n", 1LL}});  // neither writes nor raises

  TestLog::init((directory.path() / "missing-folder" / "log.jsonl").string());
  EXPECT_FALSE(TestLog::isEnabled());
  TestLog::log("still_off", {{"n", 2LL}});
  EXPECT_FALSE(directory.exists("missing-folder"));

  std::string const path = (directory.path() / "log.jsonl").string();
  directory.write("log.jsonl", "old content\n");
  TestLog::init(path);
  ASSERT_TRUE(TestLog::isEnabled());
  TestLog::log("replay_verification",
               {{"matched", true}, {"end_frame", 3615LL}, {"end_state_checksum", 12345678901234567890ULL},
                {"note", std::string("tab\there\x01")}});
  // Flushed at once: readable while the log is still open. The file was truncated first.
  EXPECT_EQ(directory.read("log.jsonl"),
            "{\"event\":\"replay_verification\",\"matched\":true,\"end_frame\":3615,"
            "\"end_state_checksum\":12345678901234567890,\"note\":\"tab\\there\\u0001\"}\n");
  std::string const firstLine = directory.read("log.jsonl");
  TestLog::log("second", {});
  TestLog::close();
  EXPECT_FALSE(TestLog::isEnabled());
  TestLog::log("after_close", {});
  EXPECT_EQ(directory.read("log.jsonl"), firstLine + "{\"event\":\"second\"}\n");
}

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <variant>

#include "accounts/CredentialsFile.h"
#include "support/Bytes.h"
#include "support/TempDirectory.h"

using testbytes::Bytes;
using testbytes::Concat;
using testbytes::Of;

namespace {

Bytes Length(unsigned value) {
  return Of({static_cast<int>(value & 0xFF), static_cast<int>((value >> 8) & 0xFF), static_cast<int>((value >> 16) & 0xFF),
             static_cast<int>(value >> 24)});
}

Bytes Counting(std::size_t count, int first) {
  Bytes bytes;
  for (std::size_t i = 0; i < count; ++i) bytes.push_back(static_cast<unsigned char>(first + i));
  return bytes;
}

Bytes File(std::size_t name, std::size_t id, std::size_t secret) {
  return Concat({Length(name), Bytes(name, 'n'), Length(id), Counting(id, 1), Length(secret), Counting(secret, 100)});
}

// The loaded credentials, or the text of the exception.
std::variant<Credentials, std::string> Read(Bytes const& bytes) {
  std::istringstream in(std::string(bytes.begin(), bytes.end()));
  try {
    return ReadCredentials(in);
  } catch (std::runtime_error const& error) {
    return std::string(error.what());
  }
}

}  // namespace

TEST(CredentialsFile, WritesTheClientsLayoutAndReadsItBack) {
  TempDirectory directory;
  Credentials const credentials{Counting(8, 0xA0), Counting(16, 0x30)};
  std::string const path = directory.file("credentials.bin");
  directory.write("credentials.bin", "an older, longer file that is replaced");
  SaveCredentials(credentials, path);
  EXPECT_EQ(directory.readBytes("credentials.bin"),
            Concat({Of({4, 0, 0, 0, 'A', 'n', 'o', 'n', 8, 0, 0, 0}), Counting(8, 0xA0), Of({16, 0, 0, 0}), Counting(16, 0x30)}));
  EXPECT_EQ(LoadCredentials(path), credentials);
}

TEST(CredentialsFile, LimitsSizesAndTrailingData) {
  using Result = std::variant<Credentials, std::string>;
  Bytes const idBytes = Counting(8, 1);
  Bytes const secretBytes = Counting(16, 100);
  struct Case {
    char const* what;
    Bytes file;
    Result expected;
  };
  std::string const format = "Unexpected data format in credentials file";
  Case const cases[] = {
      {"empty name, 3-byte id padded with zeros", File(0, 3, 16), Credentials{Of({1, 2, 3, 0, 0, 0, 0, 0}), secretBytes}},
      {"20-byte secret cut to 16", File(4, 8, 20), Credentials{idBytes, secretBytes}},
      {"every field at its limit", File(30, 32, 64), Credentials{idBytes, secretBytes}},
      {"empty id and secret", File(0, 0, 0), Credentials{Bytes(8, 0), Bytes(16, 0)}},
      {"name of 31", File(31, 8, 16), format},
      {"id of 33", File(4, 33, 16), format},
      {"secret of 65", File(4, 8, 65), format},
      {"a huge name length", Concat({Length(0xFFFFFFFFu), File(0, 8, 16)}), format},
      {"a huge secret length", Concat({Length(0), Length(8), idBytes, Length(0x80000000u)}), format},
      {"one byte more", Concat({File(4, 8, 16), Of({0})}), "Unexpected trailing data in credentials file"},
      {"a second file after the first", Concat({File(4, 8, 16), File(4, 8, 16)}),
       "Unexpected trailing data in credentials file"},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(Read(c.file), c.expected) << c.what;
  }
}

TEST(CredentialsFile, EveryShortReadIsReported) {
  Bytes const full = File(5, 8, 16);
  ASSERT_TRUE(std::holds_alternative<Credentials>(Read(full)));
  for (std::size_t size = 0; size < full.size(); ++size) {
    EXPECT_EQ(Read(Bytes(full.begin(), full.begin() + static_cast<std::ptrdiff_t>(size))),
              (std::variant<Credentials, std::string>{"Failed to read complete credentials from file"}))
        << "first " << size << " bytes";
  }
}

TEST(CredentialsFile, FailuresToOpenAndToWriteNameTheirCause) {
  TempDirectory directory;
  std::string const missing = directory.file("absent/credentials.bin");
  Credentials const credentials{Bytes(8, 1), Bytes(16, 2)};
  try {
    LoadCredentials(missing);
    ADD_FAILURE() << "a missing file loaded";
  } catch (std::runtime_error const& error) {
    EXPECT_EQ(std::string(error.what()), "Failed to open file: " + missing);
  }
  try {
    SaveCredentials(credentials, missing);
    ADD_FAILURE() << "saved into a missing folder";
  } catch (std::runtime_error const& error) {
    EXPECT_EQ(std::string(error.what()), "Failed to open file for writing: " + missing);
  }
  // /dev/full opens but refuses every write.
  try {
    SaveCredentials(credentials, "/dev/full");
    ADD_FAILURE() << "a write to /dev/full succeeded";
  } catch (std::runtime_error const& error) {
    EXPECT_EQ(std::string(error.what()), "Failed to write credentials to file");
  }
}

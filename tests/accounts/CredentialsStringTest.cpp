#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "accounts/CredentialsString.h"

namespace {

// Worked out apart from the code under test: the payload 01, the id A0..A7, the secret 30..3F and the
// CRC 0x9537, written out in Base64url; the second is the same account with version byte 2 and its
// own correct CRC; the third has the id FB FF BF FB FF BF FE EF and a secret of sixteen FF bytes, so
// that its text uses "-" and "_".
std::string const kValid = "AaChoqOkpaanMDEyMzQ1Njc4OTo7PD0-P5U3";
std::string const kVersion2 = "AqChoqOkpaanMDEyMzQ1Njc4OTo7PD0-P1vr";
std::string const kHighBytes = "Afv_v_v_v_7v_____________________0Gw";

Credentials ValidCredentials() {
  Credentials credentials;
  for (int i = 0; i < 8; ++i) credentials.playerId.push_back(static_cast<unsigned char>(0xA0 + i));
  for (int i = 0; i < 16; ++i) credentials.secret.push_back(static_cast<unsigned char>(0x30 + i));
  return credentials;
}

std::string DecodeError(std::string const& text) {
  try {
    DecodeCredentialsString(text);
  } catch (std::runtime_error const& error) {
    return error.what();
  }
  return "decoded";
}

}  // namespace

TEST(CredentialsString, DecodesHandWorkedStringsWhateverTheWhitespace) {
  EXPECT_EQ(DecodeCredentialsString(kValid), ValidCredentials());
  EXPECT_EQ(DecodeCredentialsString(" AaCh oqOk\tpaan\nMDEy\r\nMzQ1\vNjc4\fOTo7PD0-\n\nP5U3 \n"), ValidCredentials());

  Credentials const high = DecodeCredentialsString(kHighBytes);
  EXPECT_EQ(high.playerId, (std::vector<unsigned char>{0xFB, 0xFF, 0xBF, 0xFB, 0xFF, 0xBF, 0xFE, 0xEF}));
  EXPECT_EQ(high.secret, std::vector<unsigned char>(16, 0xFF));

  // The encoder gives back exactly the hand-worked texts.
  EXPECT_EQ(EncodeCredentialsString(ValidCredentials()), kValid);
  EXPECT_EQ(EncodeCredentialsString(high), kHighBytes);
  EXPECT_THROW(EncodeCredentialsString(Credentials{{1, 2}, std::vector<unsigned char>(16)}), std::invalid_argument);
  EXPECT_THROW(EncodeCredentialsString(Credentials{std::vector<unsigned char>(8), {}}), std::invalid_argument);
}

TEST(CredentialsString, EachFaultGivesItsOwnTextInTheOrderOfTheChecks) {
  std::string withPlus = kValid;
  withPlus[31] = '+';  // the "-" of the text in the standard alphabet's spelling
  std::string withSlash = kHighBytes;
  withSlash[3] = '/';
  struct Case {
    std::string text;
    char const* error;
  };
  Case const cases[] = {
      {kValid + "A", "Invalid Base64url length"},               // 37 characters
      {"A", "Invalid Base64url length"},
      {withPlus + "+", "Invalid Base64url length"},             // the length is looked at first
      {withPlus, "Invalid Base64url character"},
      {withSlash, "Invalid Base64url character"},
      {kValid.substr(0, 32) + "P5U\xC3", "Invalid Base64url character"},
      {kValid.substr(0, 35) + ".", "Invalid Base64url character"},
      {std::string(32, 'A') + "A===", "Invalid Base64url padding"},
      {std::string(32, 'A') + "====", "Invalid Base64url padding"},
      {"A=", "Invalid Base64url padding"},                      // "A" and "=" padded to "A==="
      {"AB==", "Decoded payload has unexpected length"},        // padding that is allowed
      {std::string(24, 'A'), "Decoded payload has unexpected length"},
      {kValid.substr(0, 34), "Decoded payload has unexpected length"},  // 25 bytes
      {kValid.substr(0, 35), "Decoded payload has unexpected length"},  // 26 bytes
      {kValid + "AAAA", "Decoded payload has unexpected length"},
      {"", "Decoded payload has unexpected length"},
      {" \t\r\n", "Decoded payload has unexpected length"},
      {kVersion2, "Unsupported credential version"},
      {"AqChoqOkpaanMDEyMzQ1Njc4OTo7PD0-P5U3", "Unsupported credential version"},  // and a wrong CRC
      {"AaChoqOkpaanMDEyMzQ1Njc4OTo7PD0-P5U4", "Credential checksum mismatch"},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(DecodeError(c.text), c.error) << "text: \"" << c.text << "\"";
  }
}

TEST(CredentialsString, AnyChangeOfOneCharacterAfterTheVersionFailsTheChecksum) {
  // Characters 2 to 35 carry bits of bytes 1 to 26 only; any change within one character is a burst of
  // at most 6 bits, which the CRC always detects.
  std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  int checked = 0;
  for (std::size_t position = 2; position < kValid.size(); ++position) {
    for (char const replacement : alphabet) {
      if (replacement == kValid[position]) continue;
      std::string text = kValid;
      text[position] = replacement;
      ASSERT_EQ(DecodeError(text), "Credential checksum mismatch") << text;
      ++checked;
    }
  }
  EXPECT_EQ(checked, 34 * 63);
}

TEST(CredentialsString, CrcMatchesTheCatalogueCheckValue) {
  std::string const digits = "123456789";
  EXPECT_EQ(CredentialsCrc16(reinterpret_cast<unsigned char const*>(digits.data()), digits.size()), 0x29B1);
  EXPECT_EQ(CredentialsCrc16(nullptr, 0), 0xFFFF);
}

TEST(CredentialsString, WhitespaceRemovalKeepsEverythingElseInOrder) {
  std::string text = " a\tb\nc\vd\fe\rf g\xA0h";
  RemoveAsciiWhitespaceInPlace(text);
  EXPECT_EQ(text, "abcdefg\xA0h");  // a byte above 127 is no whitespace
}

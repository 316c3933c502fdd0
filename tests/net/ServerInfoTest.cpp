#include <gtest/gtest.h>

#include "net/ServerInfo.h"
#include "support/Bytes.h"

using namespace testbytes;

namespace {

std::pair<ServerInfo, std::size_t> Read(Bytes const& bytes) {
  unsigned char const* cursor = bytes.data();
  std::size_t remaining = bytes.size();
  ServerInfo const info = ServerInfo::from_wire(cursor, remaining);
  EXPECT_EQ(static_cast<std::size_t>(cursor - bytes.data()) + remaining, bytes.size());
  return {info, static_cast<std::size_t>(cursor - bytes.data())};
}

}  // namespace

TEST(ServerInfo, TwoLittleEndianFieldsAndATolerantReader) {
  Bytes out;
  ServerInfo{0x0102, 0x0304}.to_wire(out);
  EXPECT_EQ(out, Of({2, 1, 4, 3}));

  EXPECT_EQ(Read(Of({2, 1, 4, 3, 9})), std::make_pair(ServerInfo{0x0102, 0x0304}, std::size_t{4}));
  EXPECT_EQ(Read(Of({2, 1, 4})), std::make_pair(ServerInfo{0x0102, 0}, std::size_t{2}));
  EXPECT_EQ(Read(Of({2})), std::make_pair(ServerInfo{11, 0}, std::size_t{0}));
  EXPECT_EQ(Read(Bytes{}), std::make_pair(ServerInfo{11, 0}, std::size_t{0}));
  EXPECT_EQ(ServerInfo{}, (ServerInfo{11, 0}));
}

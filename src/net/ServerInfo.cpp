#include "net/ServerInfo.h"

#include "net/WireReader.h"
#include "net/WireWriter.h"

void ServerInfo::to_wire(std::vector<unsigned char>& out) const {
  WireWriter writer(out);
  writer.integer(infoA);
  writer.integer(infoB);
}

ServerInfo ServerInfo::from_wire(unsigned char const*& cursor, std::size_t& remaining) {
  ServerInfo info;
  WireReader reader(cursor, remaining);
  // A failed read leaves its field at the default and consumes nothing.
  if (reader.integer(info.infoA)) {
    reader.integer(info.infoB);
  }
  return info;
}

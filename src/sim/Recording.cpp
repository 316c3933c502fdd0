#include "sim/Recording.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <ostream>
#include <stdexcept>

#include "net/LobbyRecordsWire.h"
#include "sim/SplitServerData.h"

namespace {

std::runtime_error LoadError(std::string const& what) {
  return std::runtime_error("Failed to load recording, " + what);
}

bool ReadUint64(std::istream& in, std::uint64_t& value) {
  unsigned char bytes[8];
  in.read(reinterpret_cast<char*>(bytes), sizeof bytes);
  if (in.gcount() != static_cast<std::streamsize>(sizeof bytes)) {
    return false;
  }
  unsigned char const* cursor = bytes;
  std::size_t remaining = sizeof bytes;
  return WireReader(cursor, remaining).integer(value);
}

// Reads exactly size bytes into out. The buffer grows with the bytes actually read, a piece at a
// time, so that a corrupt size in a short file fails on the short read rather than on allocating
// what the size claims.
bool ReadExactly(std::istream& in, std::vector<unsigned char>& out, std::uint64_t size) {
  constexpr std::uint64_t kPiece = std::uint64_t{1} << 20;
  out.clear();
  while (out.size() < size) {
    auto const piece = static_cast<std::size_t>(std::min(kPiece, size - out.size()));
    std::size_t const start = out.size();
    out.resize(start + piece);
    in.read(reinterpret_cast<char*>(out.data() + start), static_cast<std::streamsize>(piece));
    if (in.gcount() != static_cast<std::streamsize>(piece)) {
      return false;
    }
  }
  return true;
}

}  // namespace

Recording::Recording(std::deque<std::vector<unsigned char>> const& updatesNewestFirst, GameResults const& results)
    : updates(updatesNewestFirst.rbegin(), updatesNewestFirst.rend()), results(results) {}

Recording::Recording(std::string const& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    throw LoadError("file does not exist: " + path);
  }
  std::ifstream in(path, std::ios::binary);
  if (!in.is_open()) {
    throw LoadError("is_open() failed: " + path);
  }
  load(in);
}

Recording::Recording(std::istream& in) { load(in); }

void Recording::load(std::istream& in) {
  std::uint64_t headerSize = 0;
  if (!ReadUint64(in, headerSize)) {
    throw LoadError("error reading header size");
  }
  std::vector<unsigned char> header;
  if (!ReadExactly(in, header, headerSize)) {
    throw LoadError("error reading header data");
  }

  unsigned char const* cursor = header.data();
  std::size_t remaining = header.size();
  WireReader reader(cursor, remaining);
  std::uint64_t magicLength = 0;
  if (!reader.integer(magicLength) || magicLength > reader.remaining()) {
    throw LoadError("file is too small");
  }
  if (magicLength != sizeof kMagic || std::memcmp(cursor, kMagic, sizeof kMagic) != 0) {
    throw LoadError("file is not a recording file");
  }
  cursor += sizeof kMagic;
  remaining -= sizeof kMagic;
  std::uint32_t version = 0;
  if (!reader.integer(version)) {
    throw LoadError("ran out of data while decoding file format version");
  }
  if (version != kFormatVersion) {
    throw LoadError("file format version is not supported");
  }
  if (!FromBytes(cursor, remaining, results)) {
    throw LoadError("ran out of data while decoding game results");
  }

  // A file that ends after the header is a recording without steps.
  std::uint64_t chunkCount = 0;
  if (!ReadUint64(in, chunkCount)) {
    chunkCount = 0;
  }
  updates.clear();
  for (std::uint64_t chunk = 0; chunk < chunkCount; ++chunk) {
    std::uint64_t size = 0;
    std::vector<unsigned char> update;
    if (!ReadUint64(in, size) || !ReadExactly(in, update, size)) {
      throw LoadError("error reading chunk " + std::to_string(chunk));
    }
    updates.push_back(std::move(update));
  }
}

void Recording::save(std::string const& path) const {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out.is_open()) {
    throw std::runtime_error("Failed to save recording: " + path);
  }
  save(out);
  out.close();
}

void Recording::save(std::ostream& out) const {
  std::vector<unsigned char> header;
  WireWriter headerWriter(header);
  headerWriter.integer(std::uint64_t{sizeof kMagic});
  headerWriter.bytes(reinterpret_cast<unsigned char const*>(kMagic), sizeof kMagic);
  headerWriter.integer(std::uint32_t{kFormatVersion});
  ToBytes(results, header);

  std::vector<unsigned char> framing;
  WireWriter framingWriter(framing);
  framingWriter.integer(std::uint64_t{header.size()});
  framingWriter.bytes(header.data(), header.size());
  framingWriter.integer(std::uint64_t{updates.size()});
  out.write(reinterpret_cast<char const*>(framing.data()), static_cast<std::streamsize>(framing.size()));

  for (std::vector<unsigned char> const& update : updates) {
    framing.clear();
    framingWriter.integer(std::uint64_t{update.size()});
    out.write(reinterpret_cast<char const*>(framing.data()), static_cast<std::streamsize>(framing.size()));
    out.write(reinterpret_cast<char const*>(update.data()), static_cast<std::streamsize>(update.size()));
  }
  out.flush();
  if (!out) {
    throw std::runtime_error("Failed to save recording, error writing to file");
  }
}

int Recording::players() const { return static_cast<int>(results.playerSlots.size()); }

std::vector<std::vector<unsigned char>> Recording::allUpdatesOnFrame(int frame) const {
  if (frame < 0 || static_cast<std::size_t>(frame) >= updates.size()) {
    return std::vector<std::vector<unsigned char>>(static_cast<std::size_t>(players()));
  }
  return SplitServerData(updates[static_cast<std::size_t>(frame)], players());
}

std::vector<unsigned char> Recording::playerUpdateOnFrame(int frame, int player) const {
  std::vector<std::vector<unsigned char>> all = allUpdatesOnFrame(frame);
  if (player < 0 || static_cast<std::size_t>(player) >= all.size()) {
    return {};
  }
  return std::move(all[static_cast<std::size_t>(player)]);
}

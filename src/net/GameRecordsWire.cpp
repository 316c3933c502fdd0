#include "net/GameRecordsWire.h"

#include <algorithm>
#include <string>

namespace {

// The entries in ascending byte order of their keys, after a 2-byte count. A map can't hold more
// entries than that count can tell; should one ever, only its first 65535 keys are written, so that
// the record stays readable.
template <class Map, class WriteValue>
void WriteSortedMap(Map const& map, std::vector<unsigned char>& out, WriteValue&& writeValue) {
  std::vector<typename Map::value_type const*> entries;
  entries.reserve(map.size());
  for (auto const& entry : map) {
    entries.push_back(&entry);
  }
  std::sort(entries.begin(), entries.end(), [](auto const* a, auto const* b) { return a->first < b->first; });
  entries.resize(std::min<std::size_t>(entries.size(), 0xFFFF));
  WireWriter(out).integer(static_cast<unsigned short>(entries.size()));
  for (auto const* entry : entries) {
    ToBytes(entry->first, out);
    writeValue(entry->second);
  }
}

// Alternative T of the variant, made the current one if it isn't already.
template <class T>
T& Alternative(GameSpecSettings& value) {
  if (!std::holds_alternative<T>(value)) {
    value.emplace<T>();
  }
  return std::get<T>(value);
}

}  // namespace

void ToBytes(GameSettings const& value, std::vector<unsigned char>& out) {
  WriteSortedMap(value.strings, out, [&](std::string const& text) { ToBytes(text, out); });
  WireWriter writer(out);
  WriteSortedMap(value.ints, out, [&](std::int32_t number) { writer.integer(number); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameSettings& value) {
  value.strings.clear();
  value.ints.clear();
  WireReader reader(cursor, remaining);
  unsigned short stringCount = 0;
  if (!reader.integer(stringCount)) {
    return false;
  }
  for (unsigned i = 0; i < stringCount; ++i) {
    std::string key;
    std::string text;
    if (!FromBytes(cursor, remaining, key) || !FromBytes(cursor, remaining, text)) {
      return false;
    }
    value.strings.insert_or_assign(std::move(key), std::move(text));
  }
  unsigned short intCount = 0;
  if (!reader.integer(intCount)) {
    return false;
  }
  for (unsigned i = 0; i < intCount; ++i) {
    std::string key;
    std::int32_t number = 0;
    if (!FromBytes(cursor, remaining, key) || !reader.integer(number)) {
      return false;
    }
    value.ints.insert_or_assign(std::move(key), number);
  }
  return true;
}

void ToBytes(GameSpecSettings const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  writer.integer(static_cast<unsigned char>(value.index()));
  struct Visitor {
    WireWriter& writer;
    std::vector<unsigned char>& out;
    void operator()(CoopChallengeIndex const& challenge) const { writer.integer(challenge.index); }
    void operator()(RankedMatchIndex const& match) const { writer.integer(match.index); }
    void operator()(GameSettings const& settings) const { ToBytes(settings, out); }
  };
  std::visit(Visitor{writer, out}, value);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameSpecSettings& value) {
  WireReader reader(cursor, remaining);
  unsigned char index = 0;
  if (!reader.integer(index)) {
    return false;
  }
  switch (index) {
    case 0:
      return reader.integer(Alternative<CoopChallengeIndex>(value).index);
    case 1:
      return reader.integer(Alternative<RankedMatchIndex>(value).index);
    case 2:
      return FromBytes(cursor, remaining, Alternative<GameSettings>(value));
    default:
      return false;
  }
}

void ToBytes(GameSpec const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  writer.integer(static_cast<std::uint16_t>(value.game));
  ToBytes(value.settings, out);
  writer.integer(value.delayFrames);
  writer.integer(value.minPlayers);
  writer.integer(value.maxPlayers);
}

GameSpec ParseGameSpec(unsigned char const* data, std::size_t size) {
  GameSpec spec;
  unsigned char const* cursor = data;
  std::size_t remaining = size;
  WireReader reader(cursor, remaining);
  std::uint16_t game = 0;
  if (!reader.integer(game)) {
    return spec;
  }
  spec.game = static_cast<Game>(game);
  if (!FromBytes(cursor, remaining, spec.settings) || remaining == 0) {
    return spec;
  }
  reader.integer(spec.delayFrames);
  if (reader.integer(spec.minPlayers)) {
    reader.integer(spec.maxPlayers);
  }
  return spec;
}

GameSpec ParseGameSpec(std::vector<unsigned char> const& bytes) { return ParseGameSpec(bytes.data(), bytes.size()); }

void ToBytes(GameResult const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  writer.integer(value.endFrame);
  ToBytes(value.results, out);
  writer.integer(value.endStateChecksum);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameResult& value) {
  WireReader reader(cursor, remaining);
  if (!reader.integer(value.endFrame) || !FromBytes(cursor, remaining, value.results)) {
    return false;
  }
  reader.integer(value.endStateChecksum);
  return true;
}

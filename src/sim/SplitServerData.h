#pragma once

#include <vector>

// The collated update that the server relays for one frame, as that frame's orders: for each of
// playerCount players in player order, a length byte and that many bytes of order (length 0 for no
// order). Bytes after the last chunk are ignored. An update shorter than its chunks claim is never
// read past its end: a chunk that runs out is cut where the update ends, and chunks beyond the end
// are empty. The result always has playerCount elements (none for a count below 1).
std::vector<std::vector<unsigned char>> SplitServerData(std::vector<unsigned char> const& update, int playerCount);

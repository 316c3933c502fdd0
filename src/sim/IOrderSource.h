#pragma once

#include <vector>

// Gives each frame's orders: one byte string per player (empty for no order), and this client's own
// order to apply at once. Returns false when the frame must wait (a stall).
class IOrderSource {
public:
  virtual ~IOrderSource() = default;
  virtual bool fetchOrders(bool localGameEnded, std::vector<unsigned char> ourNextOrder,
                           std::vector<std::vector<unsigned char>>& orders,
                           std::vector<unsigned char>& ourOrder) = 0;
};

#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "net/TandemClient.h"
#include "sim/IOrderSource.h"

// The orders of a network game: each frame pumps the tandem client and, if the frame's orders have
// come back, sends this frame's order of the local player. No order goes out on a frame that has to
// wait, and none after the local end of the game, so exactly one update is sent for each frame
// stepped before that end.
//
// Client is TandemClient<UDPClient> in the application (NetworkOrderSource); tests use the in-memory
// transport.
template <class Client>
class BasicNetworkOrderSource : public IOrderSource {
public:
  explicit BasicNetworkOrderSource(std::shared_ptr<Client> client) : client_(std::move(client)) {}

  bool fetchOrders(bool localGameEnded, std::vector<unsigned char> ourNextOrder,
                   std::vector<std::vector<unsigned char>>& orders, std::vector<unsigned char>& ourOrder) override {
    std::vector<std::vector<unsigned char>> frame;
    if (localGameEnded) {
      client_->communicate_GameEnd(frame);
    } else {
      client_->communicate(frame);
    }
    if (frame.empty()) {
      return false;
    }
    orders = std::move(frame);
    ourOrder = std::move(ourNextOrder);
    if (!localGameEnded) {
      client_->sendUpdate(ourOrder);
    }
    return true;
  }

private:
  std::shared_ptr<Client> client_;
};

using NetworkOrderSource = BasicNetworkOrderSource<TandemClient<UDPClient>>;

#include "aviators/MovingBody.h"

#include "aviators/CollisionMap.h"

// The map type used by the games; instantiated here so that it is compiled under the integer-only check.
template CollisionInfo MovingBody::updateMovement<CollisionMap>(CollisionMap const&, std::optional<int>);
template bool CollisionUpdate<CollisionMap>(CollisionMap const&, Vec2<AviatorCoord>&, Vec2<AviatorCoord>&, int, bool*);
template CollisionResult CheckLineCollision<CollisionMap>(CollisionMap const&, Vec2<AviatorCoord>, Vec2<AviatorCoord>);

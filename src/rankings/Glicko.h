#pragma once

// The rating arithmetic of ranked games: the Glicko-2 rating system with system constant tau = 0.5,
// plus UpdateMatch, which turns a game of several players, perhaps in teams, into pairwise results.
// Every client rates the same games by itself, so the arithmetic is plain double precision in a fixed
// order: the same inputs in the same order give the same bits.
namespace Glicko {

inline constexpr double kScale = 173.7178;       // shown rating points per unit of the internal scale
inline constexpr double kTau = 0.5;              // system constant: how fast volatility may move
inline constexpr double kTolerance = 0.000001;   // convergence of the volatility iteration

struct Rating {
  double mu = 0.0;     // rating on the internal scale
  double phi = 0.0;    // rating deviation on the internal scale
  double sigma = 0.0;  // volatility
  // The result of the last update, not in force until Apply.
  double newMu = 0.0;
  double newPhi = 0.0;
  double newSigma = 0.0;

  // From the shown scale: rating 1500 and deviation 350 are a new player's.
  Rating(double rating, double deviation, double volatility);
  // A copy takes the rating in force; its pending values equal it, so Apply on a copy that no update
  // has touched changes nothing.
  Rating(Rating const& other);
  Rating& operator=(Rating const& other);

  double shownRating() const { return mu * kScale + 1500.0; }
  double shownDeviation() const { return phi * kScale; }

  // One rating period against count opponents with scores 1 (win), 0.5 (draw) or 0 (loss).
  // Writes the pending values only; count must be at least 1.
  void Update(int count, Rating const* opponents, double const* scores);
  void Update(Rating const& opponent, double score);

  // The Illinois iteration for the new volatility: returns the logarithm of the new squared volatility.
  static double Convergence(double delta, double v, double phi, double sigma);

  // A period without games: the deviation widens by the volatility.
  void Decay();
  // The pending values come into force.
  void Apply();
  // Moves each pending value back toward the current one: current + (pending - current) * f.
  void ScalePendingUpdate(double f);
};

// Writes the pending values of every player of a game. teamOfPlayer[p] is p's team; placeOfTeam[t] is
// team t's place, 0 the best, equal places for equal results; teams is the length of placeOfTeam.
// Every player is rated from the ratings as they stood before the game; the caller applies them after.
void UpdateMatch(Rating* ratings, int players, int const* teamOfPlayer, int const* placeOfTeam, int teams);

}  // namespace Glicko

#include "rankings/Glicko.h"

#include <cmath>
#include <numbers>
#include <vector>

#include "app/QZAssert.h"

namespace Glicko {

namespace {

// The iterations converge in a handful of steps for any finite ratings; the caps only stop a loop
// that non-finite values could otherwise keep going.
constexpr int kMaxBracketSteps = 1000;
constexpr int kMaxIterations = 1000;

}  // namespace

Rating::Rating(double rating, double deviation, double volatility)
    : mu((rating - 1500.0) / kScale), phi(deviation / kScale), sigma(volatility), newMu(mu), newPhi(phi),
      newSigma(sigma) {}

Rating::Rating(Rating const& other)
    : mu(other.mu), phi(other.phi), sigma(other.sigma), newMu(other.mu), newPhi(other.phi), newSigma(other.sigma) {}

Rating& Rating::operator=(Rating const& other) {
  mu = newMu = other.mu;
  phi = newPhi = other.phi;
  sigma = newSigma = other.sigma;
  return *this;
}

void Rating::Update(int count, Rating const* opponents, double const* scores) {
  QZ_ASSERT(count > 0);
  double q = 0.0;
  double d = 0.0;
  for (int j = 0; j < count; ++j) {
    Rating const& opponent = opponents[j];
    double const g = 1.0 / std::sqrt(1.0 + 3.0 * opponent.phi * opponent.phi / (std::numbers::pi * std::numbers::pi));
    double const expected = 1.0 / (1.0 + std::exp(-g * (mu - opponent.mu)));
    q += g * g * expected * (1.0 - expected);
    d += g * (scores[j] - expected);
  }
  if (!(q > 0.0)) {
    // Every result was certain to the last bit of a double: the games tell nothing, and going on would
    // divide by zero.
    newMu = mu;
    newPhi = phi;
    newSigma = sigma;
    return;
  }
  double const v = 1.0 / q;
  newSigma = std::exp(Convergence(v * d, v, phi, sigma) / 2.0);
  newPhi = 1.0 / std::sqrt(q + 1.0 / (phi * phi + newSigma * newSigma));
  newMu = mu + newPhi * newPhi * d;
}

void Rating::Update(Rating const& opponent, double score) { Update(1, &opponent, &score); }

double Rating::Convergence(double delta, double v, double phi, double sigma) {
  double const a = std::log(sigma * sigma);
  double const delta2 = delta * delta;
  double const phi2 = phi * phi;
  auto f = [&](double x) {
    double const ex = std::exp(x);
    double const denominator = phi2 + v + ex;
    return ex * (delta2 - phi2 - v - ex) / (2.0 * denominator * denominator) - (x - a) / (kTau * kTau);
  };

  // Bracket the root: the upper end from the data if it can, else steps of tau below a.
  double B = 0.0;
  if (delta2 - phi2 - v > 0.0) {
    B = std::log(delta2 - phi2 - v);
  } else {
    int k = 1;
    while (f(a - k * kTau) < 0.0 && k < kMaxBracketSteps) {
      ++k;
    }
    B = a - k * kTau;
  }

  double A = a;
  double fA = f(A);
  double fB = f(B);
  if (std::abs(B - a) <= kTolerance) {
    return a;
  }
  for (int i = 0; i < kMaxIterations && std::abs(B - A) > kTolerance; ++i) {
    double const C = A + fA * (A - B) / (fB - fA);
    double const fC = f(C);
    if (fB * fC < 0.0) {
      A = B;
      fA = fB;
    } else {
      fA = fA / 2.0;
    }
    B = C;
    fB = fC;
  }
  return A;
}

void Rating::Decay() {
  newMu = mu;
  newPhi = std::sqrt(phi * phi + sigma * sigma);
  newSigma = sigma;
}

void Rating::Apply() {
  mu = newMu;
  phi = newPhi;
  sigma = newSigma;
}

void Rating::ScalePendingUpdate(double f) {
  newMu = mu + (newMu - mu) * f;
  newPhi = phi + (newPhi - phi) * f;
  newSigma = sigma + (newSigma - sigma) * f;
}

void UpdateMatch(Rating* ratings, int players, int const* teamOfPlayer, int const* placeOfTeam, int teams) {
  for (int p = 0; p < players; ++p) {
    QZ_ASSERT(teamOfPlayer[p] >= 0 && teamOfPlayer[p] < teams);
  }

  std::vector<Rating> opponents;
  std::vector<double> scores;
  for (int p = 0; p < players; ++p) {
    int const team = teamOfPlayer[p];
    opponents.clear();
    scores.clear();
    // Each opposing team is one opponent, in ascending order of team number; team-mates don't count.
    for (int u = 0; u < teams; ++u) {
      if (u == team) {
        continue;
      }
      int members = 0;
      double muSum = 0.0;
      double phiSquaredSum = 0.0;
      double sigmaSum = 0.0;
      int lastMember = -1;
      for (int other = 0; other < players; ++other) {
        if (teamOfPlayer[other] == u) {
          ++members;
          muSum += ratings[other].mu;
          phiSquaredSum += ratings[other].phi * ratings[other].phi;
          sigmaSum += ratings[other].sigma;
          lastMember = other;
        }
      }
      if (members == 0) {
        continue;
      }
      if (members == 1) {
        opponents.push_back(ratings[lastMember]);
      } else {
        // The team's mean rating; the deviations add as independent errors rather than averaging.
        opponents.emplace_back(muSum / members * kScale + 1500.0, std::sqrt(phiSquaredSum) * kScale,
                               sigmaSum / members);
      }
      scores.push_back(placeOfTeam[u] > placeOfTeam[team] ? 1.0 : placeOfTeam[u] == placeOfTeam[team] ? 0.5 : 0.0);
    }
    if (opponents.empty()) {
      // Nobody to be measured against: the pending values are the rating as it stands.
      ratings[p].newMu = ratings[p].mu;
      ratings[p].newPhi = ratings[p].phi;
      ratings[p].newSigma = ratings[p].sigma;
      continue;
    }
    int const count = static_cast<int>(opponents.size());
    ratings[p].Update(count, opponents.data(), scores.data());
    // A game against n teams counts about as much as sqrt(n) games against one.
    if (count > 1) {
      ratings[p].ScalePendingUpdate(1.0 / std::sqrt(static_cast<double>(count)));
    }
  }
}

}  // namespace Glicko

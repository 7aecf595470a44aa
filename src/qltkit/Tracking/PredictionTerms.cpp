#include <qltkit/Tracking/PredictionTerms.h>

#include <algorithm>

namespace qltkit
{
namespace
{

constexpr auto& AHEAD = PredictionTerms::AHEAD_SECONDS;

double Clamped(double seconds) { return seconds > 0.0 ? std::min(seconds, AHEAD.back()) : 0.0; }

/// The first horizon that is not before `seconds`. `seconds` is clamped.
std::size_t HorizonOf(double seconds)
{
    return seconds <= AHEAD[0] ? 0 : seconds <= AHEAD[1] ? 1 : 2;
}

/// The horizon before each horizon, or zero.
constexpr std::array<double, 3> BEFORE = {0.0, AHEAD[0], AHEAD[1]};
double Mix(double a, double b, double share) { return a + (b - a) * share; }

} // namespace

double PredictionErrors::At(double seconds) const
{
    const double ahead = Clamped(seconds);
    const std::size_t i = HorizonOf(ahead);
    const double before = BEFORE[i] * BEFORE[i];
    const double share = (ahead * ahead - before) / (AHEAD[i] * AHEAD[i] - before);
    return Mix(i == 0 ? 0.0 : radians[i - 1], radians[i], share);
}

} // namespace qltkit

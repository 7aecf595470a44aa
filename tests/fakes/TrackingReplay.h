// Plays recordings through the estimator and the predictor, unchanged or with losses.
#pragma once

#include <qltkit/Tracking/Predictor.h>

#include "fakes/TrackingRecording.h"

#include <random>

namespace tracking
{

using qltkit::ImuSample;
using qltkit::OrientationEstimator;
using qltkit::Predictor;

using Change = bool (*)(ImuSample& sample, std::size_t index, std::mt19937& random);

/// `change` may change each sample. It returns false when the sample is left out.
inline Score Replay(const Recording& recording, Change change)
{
    OrientationEstimator estimator;
    Series estimate;
    std::mt19937 random(7);
    for (std::size_t i = 0; i < recording.samples.size(); ++i)
    {
        ImuSample sample = recording.samples[i];
        if (change(sample, i, random) && estimator.Add(sample))
        {
            const auto late =
                static_cast<std::int32_t>(sample.timeUs - recording.samples[i].timeUs);
            estimate.Append(recording.timesUs[i] + late, estimator.GetOrientation());
        }
    }
    return ScoreEstimate(recording, estimate);
}

inline bool Same(ImuSample&, std::size_t, std::mt19937&) { return true; }
inline bool HalfTheRate(ImuSample&, std::size_t i, std::mt19937&) { return i % 2 == 0; }
inline bool OneInTwentyLost(ImuSample&, std::size_t, std::mt19937& random)
{
    return random() % 20 != 0;
}

inline bool Jitter(ImuSample& sample, std::size_t, std::mt19937& random)
{
    sample.timeUs += static_cast<std::uint32_t>(random() % 201) - 100u;
    return true;
}

/// Root mean square angles in degrees between a prediction and the later estimate.
struct PredictionErrors
{
    double predicted = 0.0;
    double constantRate = 0.0;
    double held = 0.0;
    double own = 0.0; // the value that the predictor itself measures
};

inline double Rms(const Series& predicted, const Series& estimate, double aheadUs, double fromUs)
{
    double squares = 0.0;
    double count = 0.0;
    for (std::size_t i = 0; i < predicted.timesUs.size(); ++i)
    {
        Rotation later;
        if (predicted.timesUs[i] >= fromUs && estimate.At(predicted.timesUs[i] + aheadUs, later))
        {
            const double angle = AngleBetween(predicted.values[i], later) * DEGREES;
            squares += angle * angle;
            count += 1.0;
        }
    }
    return std::sqrt(squares / count);
}

template <typename Next>
PredictionErrors Predict(std::size_t samples, double aheadS, double skipS, const Next& next)
{
    OrientationEstimator estimator;
    Predictor predictor;
    Series estimate;
    Series predicted;
    Series constantRate;
    for (std::size_t i = 0; i < samples; ++i)
    {
        if (!estimator.Add(next(i)))
        {
            continue;
        }
        predictor.Add(estimator);
        const auto time = static_cast<double>(estimator.GetState().elapsedUs);
        const Rotation& q = estimator.GetOrientation();
        estimate.Append(time, q);
        predicted.Append(time, predictor.Predict(aheadS));
        constantRate.Append(time, q * qltkit::RotationBy(estimator.GetAngularVelocity() * aheadS));
    }
    const auto rms = [&](const Series& s) { return Rms(s, estimate, aheadS * 1e6, skipS * 1e6); };
    return {rms(predicted), rms(constantRate), rms(estimate), predictor.GetError(aheadS) * DEGREES};
}

} // namespace tracking

// The measured lens of the Quelta Orbel Ixo: the scale factor of each colour as a function of the
// distance from the lens centre.
#pragma once

#include <array>

namespace qlt::DistortionTables
{

using Table = std::array<double, 20>;

/// k / 19 with the six significant digits of the measurement. Do not replace them by the exact
/// fractions.
constexpr Table RADIUS = {0.0,      0.0526316, 0.105263, 0.157895, 0.210526, 0.263158, 0.315789,
                          0.368421, 0.421053,  0.473684, 0.526316, 0.578947, 0.631579, 0.684211,
                          0.736842, 0.789474,  0.842105, 0.894737, 0.947368, 1.0};

/// The measured red repeats its first value, and the measured green and blue dip at their second.
constexpr Table RED = {0.5576, 0.5576, 0.5589, 0.5605, 0.5625, 0.5663, 0.5712,
                       0.5775, 0.5849, 0.5947, 0.6057, 0.6191, 0.6357, 0.6548,
                       0.6783, 0.7069, 0.7406, 0.7829, 0.8326, 0.8921};
constexpr Table GREEN = {0.5617, 0.5615, 0.5628, 0.5645, 0.5666, 0.5706, 0.5758,
                         0.5824, 0.5902, 0.6004, 0.6119, 0.626,  0.6433, 0.6635,
                         0.6883, 0.7188, 0.7551, 0.8008, 0.8552, 0.9211};
constexpr Table BLUE = {0.5669, 0.5666, 0.5678, 0.5696, 0.5719, 0.5762, 0.5817,
                        0.5887, 0.5971, 0.6078, 0.6201, 0.6352, 0.6537, 0.6755,
                        0.7024, 0.7357, 0.7756, 0.8262, 0.8871, 0.9616};

} // namespace qlt::DistortionTables

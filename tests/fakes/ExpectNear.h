// Compares quaternions within a tolerance.
#pragma once

#include <qlt/Math/Quaternion.h>

#include <gtest/gtest.h>

inline void ExpectNear(const qlt::Quaternion& q, const qlt::Quaternion& expected, float tolerance)
{
    EXPECT_NEAR(q.w(), expected.w(), tolerance);
    EXPECT_NEAR(q.x(), expected.x(), tolerance);
    EXPECT_NEAR(q.y(), expected.y(), tolerance);
    EXPECT_NEAR(q.z(), expected.z(), tolerance);
}

inline qlt::Quaternion AboutY(float angle)
{
    return qlt::Quaternion(std::cos(angle / 2), 0, std::sin(angle / 2), 0);
}

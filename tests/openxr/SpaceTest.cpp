#include "OpenXr.h"

#include "Optics/Reprojection.h"

#include <cmath>
#include <fstream>
#include <limits>
#include <thread>

namespace qltxr
{

namespace
{

constexpr float NAN_F = std::numeric_limits<float>::quiet_NaN();
constexpr XrSpaceLocationFlags VALID =
    XR_SPACE_LOCATION_ORIENTATION_VALID_BIT | XR_SPACE_LOCATION_POSITION_VALID_BIT;
constexpr XrSpaceLocationFlags TRACKED =
    XR_SPACE_LOCATION_ORIENTATION_TRACKED_BIT | XR_SPACE_LOCATION_POSITION_TRACKED_BIT;

void ExpectPlace(const XrPosef& pose, float x, float y, float z)
{
    EXPECT_NEAR(pose.position.x, x, 1e-6f);
    EXPECT_NEAR(pose.position.y, y, 1e-6f);
    EXPECT_NEAR(pose.position.z, z, 1e-6f);
}

Turn About(const Vector& axis, double degrees)
{
    const double half = degrees * std::acos(-1.0) / 360.0;
    const double s = std::sin(half);
    return {std::cos(half), axis[0] * s, axis[1] * s, axis[2] * s};
}

} // namespace

TEST_F(HeadlessTest, SpacesAreCreatedByTheRules)
{
    XrSpace space = reinterpret_cast<XrSpace>(77);
    XrReferenceSpaceCreateInfo info{XR_TYPE_REFERENCE_SPACE_CREATE_INFO, nullptr,
                                    XR_REFERENCE_SPACE_TYPE_LOCAL, IDENTITY};
    for (const int type : {0, 77, 1000038000, 0x7FFFFFFF})
    {
        info.referenceSpaceType = static_cast<XrReferenceSpaceType>(type);
        EXPECT_EQ(CreateReferenceSpace(session, &info, &space),
                  XR_ERROR_REFERENCE_SPACE_UNSUPPORTED);
    }
    EXPECT_EQ(space, reinterpret_cast<XrSpace>(77));
    info.referenceSpaceType = XR_REFERENCE_SPACE_TYPE_STAGE;
    for (const XrPosef bad : {XrPosef{{0, 0, 0, 0.98f}, {}}, XrPosef{{0, 0, 0, 0}, {}},
                              XrPosef{{0.1f, 0.1f, 0.1f, 0.1f}, {}}, XrPosef{{NAN_F, 0, 0, 1}, {}},
                              XrPosef{{0, 0, 0, 1}, {0, INFINITY, 0}}})
    {
        info.poseInReferenceSpace = bad;
        EXPECT_EQ(CreateReferenceSpace(session, &info, &space), XR_ERROR_POSE_INVALID);
    }
    info.poseInReferenceSpace = {{0, 0, 0, 0.995f}, {}};
    EXPECT_EQ(CreateReferenceSpace(session, &info, &space), XR_SUCCESS);
    EXPECT_EQ(DestroySpace(space), XR_SUCCESS);
    EXPECT_EQ(DestroySpace(space), XR_ERROR_HANDLE_INVALID);

    XrExtent2Df bounds{1, 1};
    EXPECT_EQ(GetReferenceSpaceBoundsRect(session, XR_REFERENCE_SPACE_TYPE_STAGE, &bounds),
              XR_SPACE_BOUNDS_UNAVAILABLE);
    EXPECT_EQ(bounds.width, 0.0f);
    EXPECT_EQ(GetReferenceSpaceBoundsRect(session, static_cast<XrReferenceSpaceType>(77), &bounds),
              XR_ERROR_VALIDATION_FAILURE);
}

// The offset of each space is to the right of its own origin.
TEST_F(HeadlessTest, SpacesAreLocatedInEachOther)
{
    const XrSpace local = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL);
    const XrSpace stage = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_STAGE);
    const XrSpace floor = ReferenceSpace(REFERENCE_SPACE_TYPE_LOCAL_FLOOR);
    const XrSpace view = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_VIEW);
    const float s = std::sqrt(0.5f);
    const XrPosef turned{{0, s, 0, s}, {1, 2, 3}}; // this turns 90 degrees to the left
    const XrSpace moved = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL, turned);

    XrSpaceVelocity velocity{XR_TYPE_SPACE_VELOCITY};
    XrSpaceLocation location{XR_TYPE_SPACE_LOCATION, &velocity};
    EXPECT_EQ(LocateSpace(local, stage, 0, &location), XR_ERROR_TIME_INVALID);
    ASSERT_EQ(LocateSpace(local, stage, 1, &location), XR_SUCCESS);
    EXPECT_EQ(location.locationFlags, VALID | TRACKED);
    // The neck is 1.55 m high, and the eyes are 0.075 m above it.
    ExpectPlace(location.pose, 0.0f, 1.625f, 0.0f);
    ASSERT_EQ(LocateSpace(stage, floor, SOME_TIME, &location), XR_SUCCESS);
    ExpectPlace(location.pose, 0.0f, 0.0f, 0.0f);
    ASSERT_EQ(LocateSpace(local, moved, SOME_TIME, &location), XR_SUCCESS);
    ExpectPlace(location.pose, 3.0f, -2.0f, -1.0f);
    EXPECT_NEAR(location.pose.orientation.y, -s, 1e-6f);
    EXPECT_EQ(velocity.velocityFlags,
              XR_SPACE_VELOCITY_LINEAR_VALID_BIT | XR_SPACE_VELOCITY_ANGULAR_VALID_BIT);
    ASSERT_EQ(LocateSpace(view, local, SOME_TIME, &location), XR_SUCCESS);
    EXPECT_EQ(location.locationFlags, VALID) << "a head that is held is not tracked";
    location.type = XR_TYPE_VIEW;
    EXPECT_EQ(LocateSpace(view, local, SOME_TIME, &location), XR_ERROR_VALIDATION_FAILURE);
}

TEST_F(HeadlessTest, ViewsAreTheEyesOfTheHead)
{
    const XrSpace view = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_VIEW);
    XrViewLocateInfo info{XR_TYPE_VIEW_LOCATE_INFO, nullptr,
                          XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO, SOME_TIME, view};
    XrViewState state{XR_TYPE_VIEW_STATE};
    XrView views[2] = {{XR_TYPE_VIEW}, {XR_TYPE_VIEW}};
    std::uint32_t count = 0;
    EXPECT_EQ(LocateViews(session, &info, &state, 0, &count, nullptr), XR_SUCCESS);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(LocateViews(session, &info, &state, 1, &count, views), XR_ERROR_SIZE_INSUFFICIENT);
    ASSERT_EQ(LocateViews(session, &info, &state, 2, &count, views), XR_SUCCESS);
    EXPECT_EQ(state.viewStateFlags &
                  (XR_VIEW_STATE_ORIENTATION_VALID_BIT | XR_VIEW_STATE_POSITION_VALID_BIT),
              VALID);
    ExpectPlace(views[0].pose, -0.03125f, 0, 0);
    ExpectPlace(views[1].pose, 0.03125f, 0, 0);
    EXPECT_NEAR(views[0].fov.angleLeft, -views[1].fov.angleRight, 1e-4f);
    EXPECT_LT(views[0].fov.angleLeft, -1.0f);
    EXPECT_GT(views[0].fov.angleLeft, -63.25f * 3.14159f / 180) << "the lens shows no more";

    info.displayTime = 0;
    EXPECT_EQ(LocateViews(session, &info, &state, 2, &count, views), XR_ERROR_TIME_INVALID);
    info.displayTime = SOME_TIME;
    views[1].type = XR_TYPE_UNKNOWN;
    EXPECT_EQ(LocateViews(session, &info, &state, 2, &count, views), XR_ERROR_VALIDATION_FAILURE);
    info.viewConfigurationType = XR_VIEW_CONFIGURATION_TYPE_PRIMARY_MONO;
    EXPECT_EQ(LocateViews(session, &info, &state, 0, &count, nullptr),
              XR_ERROR_VIEW_CONFIGURATION_TYPE_UNSUPPORTED);
}

// The head faces left. The neck is behind and below the eyes.
TEST(SpacesTest, TheHeadTurnsAboutTheNeckAndItsVelocityIsInTheAxesOfTheBase)
{
    const Person person{0.06, 0.1, 0.2, 1.6};
    const Head head{HeadPose(About({0, 1, 0}, 90.0), person), {0.0, 0.0, 2.0}, true, true};
    XrSpaceLocation location{};
    XrSpaceVelocity velocity{};
    const SpaceOrigin view{false, XR_REFERENCE_SPACE_TYPE_VIEW, {}};
    const SpaceOrigin local{false, XR_REFERENCE_SPACE_TYPE_LOCAL, {}};
    Locate(view, local, head, person, location, &velocity);
    ExpectPlace(location.pose, -0.2f, 0.0f, 0.2f);
    EXPECT_NEAR(velocity.angularVelocity.z, 2.0f, 1e-6f);
    EXPECT_EQ(location.locationFlags, VALID | XR_SPACE_LOCATION_ORIENTATION_TRACKED_BIT);

    // In the axes of the head, the world turns in the opposite direction. The world's z axis points
    // to the right of the head.
    Locate(local, view, head, person, location, &velocity);
    EXPECT_NEAR(velocity.angularVelocity.x, 2.0f, 1e-6f);
    EXPECT_NEAR(velocity.angularVelocity.z, 0.0f, 1e-6f);

    // The linear velocity must agree with the positions after a short turn.
    constexpr double TIME = 1e-4;
    const Rigid after =
        HeadPose(About({0, 0, 1}, 2.0 * TIME * 180.0 / std::acos(-1.0)) * head.pose.turn, person);
    const SpaceOrigin fixed{
        false, XR_REFERENCE_SPACE_TYPE_STAGE, {About({1, 0, 0}, 40.0), {1, 2, 3}}};
    const SpaceOrigin onHead{
        false, XR_REFERENCE_SPACE_TYPE_VIEW, {About({1, 0, 0}, 9.0), {3, 1, 2}}};
    for (const auto& [space, base] : {std::pair(fixed, onHead), std::pair(onHead, fixed)})
    {
        Locate(space, base, head, person, location, &velocity);
        const Rigid there = PlaceOf(base, after, person).Inverse() * PlaceOf(space, after, person);
        EXPECT_NEAR(velocity.linearVelocity.x, (there.place[0] - location.pose.position.x) / TIME,
                    0.02);
        EXPECT_NEAR(velocity.linearVelocity.y, (there.place[1] - location.pose.position.y) / TIME,
                    0.02);
        EXPECT_NEAR(velocity.linearVelocity.z, (there.place[2] - location.pose.position.z) / TIME,
                    0.02);
    }

    const SpaceOrigin action{true, XR_REFERENCE_SPACE_TYPE_LOCAL, {}};
    Locate(action, local, head, person, location, &velocity);
    EXPECT_EQ(location.locationFlags, 0u);
    EXPECT_EQ(velocity.velocityFlags, 0u);
    EXPECT_EQ(location.pose.orientation.w, 1.0f);
    Locate(view, view, Head{}, person, location, nullptr);
    EXPECT_EQ(location.locationFlags, VALID | TRACKED) << "exact even without any head";
}

// The head looks 20 degrees up. The kit's estimator knows this at once, and the core's filter does
// not. The cable is unplugged from 0.3 s to 0.6 s, and the tracker looks for the headset once a
// second.
TEST(TrackerSourceTest, TheHeadIsHeldWhileTheCableIsOut)
{
    const std::string script = testing::TempDir() + "unplugged.json";
    std::ofstream(script) << R"({"motion": {"kind": "angles", "points": [{"at": 0, "pitch": 20}]},
        "events": [{"at": 0.3, "event": "unplug"}, {"at": 0.6, "event": "plug"}]})";
    const TrackerSource source({script, qltkit::PoseFilter::Kit});
    const TrackerSource core({script, qltkit::PoseFilter::Core});
    const XrTime deadline = Now() + 10 * std::int64_t{1000000000};
    for (const bool tracked : {true, false, true})
    {
        while (source.At(Now()).tracked != tracked && Now() < deadline)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        const HeadMoment moment = source.At(Now());
        EXPECT_EQ(moment.tracked, tracked) << source.Describe();
        EXPECT_TRUE(moment.known);
        EXPECT_NEAR(moment.orientation.x, std::sin(10.0 * std::acos(-1.0) / 180.0), 0.02);
        EXPECT_LT(core.At(Now()).orientation.x, 0.1);
        EXPECT_EQ(source.Describe() == script + ", tracking", tracked);
    }
}

namespace
{

std::array<double, 3> Map(const Homography& h, double x, double y)
{
    const auto row = [&](std::size_t i) { return h[i] * x + h[i + 1] * y - h[i + 2]; };
    const double c = row(6);
    return {row(0) / c, row(3) / c, c};
}

} // namespace

// The expected tangents come from angles that were added by hand.
TEST(ReprojectionTest, APictureStaysWhereItIsInTheWorld)
{
    const double deg = std::acos(-1.0) / 180.0;
    Layer layer;
    layer.views[0].fov = layer.views[1].fov = {-0.5f, 0.7f, 0.6f, -0.4f};
    const auto expected = [&](double angle)
    { return (std::tan(angle) - std::tan(-0.5f)) / (std::tan(0.7f) - std::tan(-0.5f)); };
    Homography h{};
    const Person person{0.06, 0.0, 0.0, 1.6};
    ASSERT_TRUE(PictureOf(layer, 0, {{}, person}, h));
    EXPECT_NEAR(Map(h, std::tan(0.2), 0.0)[0], expected(0.2), 1e-6);

    // The head looks 10 degrees to the left, so its forward direction was 10 degrees to the left
    // before.
    const Viewer turned{{About({0, 1, 0}, 10.0), {}}, person};
    ASSERT_TRUE(PictureOf(layer, 1, turned, h));
    EXPECT_NEAR(Map(h, 0.0, 0.0)[0], expected(-10.0 * deg), 1e-6);
    EXPECT_NEAR(Map(h, std::tan(25.0 * deg), 0.0)[0], expected(15.0 * deg), 1e-6);

    // A layer in the space of the head does not move, and a layer behind the head is not visible.
    layer.space.type = XR_REFERENCE_SPACE_TYPE_VIEW;
    ASSERT_TRUE(PictureOf(layer, 1, turned, h));
    EXPECT_NEAR(Map(h, 0.0, 0.0)[0], expected(0.0), 1e-6);
    layer.space.type = XR_REFERENCE_SPACE_TYPE_LOCAL;
    ASSERT_TRUE(PictureOf(layer, 0, {{About({0, 1, 0}, 180.0), {}}, person}, h));
    EXPECT_LT(Map(h, 0.0, 0.0)[2], 0.0);
}

TEST(ReprojectionTest, AQuadIsSeenFromItsFrontAndByTheEyesItIsFor)
{
    Layer quad;
    quad.isQuad = true;
    quad.size = {2.0f, 1.0f};
    quad.views[0].pose = {{}, {0.5, 0.25, -2.0}};
    const Person person{0.0, 0.0, 0.0, 1.6};
    const Viewer viewer{{}, person};
    Homography h{};
    ASSERT_TRUE(PictureOf(quad, 0, viewer, h));
    // The forward direction meets the quad half a metre to the left of its middle and a quarter
    // below it.
    EXPECT_NEAR(Map(h, 0.0, 0.0)[0], 0.25, 1e-6);
    EXPECT_NEAR(Map(h, 0.0, 0.0)[1], 0.25, 1e-6);
    // The upper right corner of the quad is at (1.5, 0.75, -2).
    EXPECT_NEAR(Map(h, 0.75, 0.375)[0], 1.0, 1e-6);
    EXPECT_NEAR(Map(h, 0.75, 0.375)[1], 1.0, 1e-6);
    quad.eyes = XR_EYE_VISIBILITY_RIGHT;
    EXPECT_FALSE(PictureOf(quad, 0, viewer, h));
    EXPECT_TRUE(PictureOf(quad, 1, viewer, h));
    quad.size = {0.0f, 0.0f};
    EXPECT_FALSE(PictureOf(quad, 1, viewer, h));
    quad.size = {1.0f, 1.0f};
    quad.views[0].pose = {About({0, 1, 0}, 180.0), {0.0, 0.0, -2.0}};
    EXPECT_FALSE(PictureOf(quad, 1, viewer, h));
}

TEST_F(HeadlessTest, TheVisibilityMaskIsWellFormedInAllItsForms)
{
    using Type = XrVisibilityMaskTypeKHR;
    XrVisibilityMaskKHR mask{XR_TYPE_VISIBILITY_MASK_KHR};
    const auto get = [&](std::uint32_t view, Type type)
    {
        return GetVisibilityMaskKHR(session, XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO, view, type,
                                    &mask);
    };
    EXPECT_EQ(get(2, XR_VISIBILITY_MASK_TYPE_LINE_LOOP_KHR), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(get(0, static_cast<Type>(9)), XR_ERROR_VALIDATION_FAILURE);
    for (const Type type :
         {XR_VISIBILITY_MASK_TYPE_HIDDEN_TRIANGLE_MESH_KHR,
          XR_VISIBILITY_MASK_TYPE_VISIBLE_TRIANGLE_MESH_KHR, XR_VISIBILITY_MASK_TYPE_LINE_LOOP_KHR})
    {
        mask = {XR_TYPE_VISIBILITY_MASK_KHR};
        ASSERT_EQ(get(1, type), XR_SUCCESS);
        std::vector<XrVector2f> points(mask.vertexCountOutput);
        std::vector<std::uint32_t> indices(mask.indexCountOutput);
        mask.vertices = points.data();
        mask.indices = indices.data();
        mask.vertexCapacityInput = mask.vertexCountOutput;
        mask.indexCapacityInput = mask.indexCountOutput - 1;
        EXPECT_EQ(get(1, type), XR_ERROR_SIZE_INSUFFICIENT);
        mask.indexCapacityInput = mask.indexCountOutput;
        ASSERT_EQ(get(1, type), XR_SUCCESS);
        const bool isLoop = type == XR_VISIBILITY_MASK_TYPE_LINE_LOOP_KHR;
        EXPECT_EQ(isLoop ? indices.size() - points.size() : indices.size() % 3, 0u);
        const auto cross = [&](const XrVector2f& o, std::uint32_t a, std::uint32_t b) {
            return (points[a].x - o.x) * (points[b].y - o.y) -
                   (points[a].y - o.y) * (points[b].x - o.x);
        };
        for (std::size_t i = 0; i < indices.size(); i += isLoop ? 1 : 3)
        {
            ASSERT_LT(indices[i], points.size());
            const float area = isLoop ? cross({0, 0}, indices[i], indices[(i + 1) % indices.size()])
                                      : cross(points[indices[i]], indices[i + 1], indices[i + 2]);
            EXPECT_GT(area, 0.0f) << "counter-clockwise, " << i;
        }
    }
}

} // namespace qltxr

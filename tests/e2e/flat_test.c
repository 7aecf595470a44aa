/* A C program that calls every function of the flat interface in the shipped library. */
#include <qlt/qlt_c_api.h>

#include <math.h>
#include <stdio.h>

static int failures = 0;

static void Check(int condition, const char* text)
{
    if (!condition)
    {
        printf("failed: %s\n", text);
        ++failures;
    }
}

#define CHECK(condition) Check((condition) != 0, #condition)

static void CheckValues(void)
{
    qlt_Quaternion* zero = qlt_Quaternion_New();
    qlt_Quaternion* q = qlt_Quaternion_New4(0.5f, 1.5f, 2.5f, 3.5f);
    qlt_Vec2* v2 = qlt_Vec2_New();
    qlt_Vec3* v3 = qlt_Vec3_New();
    CHECK(qlt_Quaternion_w(zero) == 0 && qlt_Quaternion_x(zero) == 0);
    CHECK(qlt_Quaternion_y(zero) == 0 && qlt_Quaternion_z(zero) == 0);
    CHECK(qlt_Quaternion_w(q) == 0.5f && qlt_Quaternion_x(q) == 1.5f);
    CHECK(qlt_Quaternion_y(q) == 2.5f && qlt_Quaternion_z(q) == 3.5f);
    qlt_Quaternion_ConvertToUnity(q);
    CHECK(qlt_Quaternion_w(q) == -0.5f && qlt_Quaternion_x(q) == 1.5f);
    CHECK(qlt_Quaternion_y(q) == 2.5f && qlt_Quaternion_z(q) == -3.5f);
    qlt_Quaternion_set_w(q, 4);
    qlt_Quaternion_set_x(q, 5);
    qlt_Quaternion_set_y(q, 6);
    qlt_Quaternion_set_z(q, 7);
    CHECK(qlt_Quaternion_w(q) == 4 && qlt_Quaternion_x(q) == 5);
    CHECK(qlt_Quaternion_y(q) == 6 && qlt_Quaternion_z(q) == 7);
    CHECK(qlt_Vec2_x(v2) == 0 && qlt_Vec2_y(v2) == 0);
    CHECK(qlt_Vec3_x(v3) == 0 && qlt_Vec3_y(v3) == 0 && qlt_Vec3_z(v3) == 0);
    qlt_Quaternion_Delete(zero);
    qlt_Quaternion_Delete(q);
    qlt_Vec2_Delete(v2);
    qlt_Vec3_Delete(v3);
}

static void CheckParams(void)
{
    CHECK(qlt_Params_EYE_FOV_DEG() == 126.5f);
    CHECK(qlt_Params_EYE_RESOLUTION() == 1024);
    CHECK(qlt_Params_EYE_STRETCH() == 3.0f);
    CHECK(qlt_Params_EYE_DISTORT() == 1);
    CHECK(qlt_Params_USER_IPD_M() == 0.0625f);
    CHECK(qlt_Params_USER_NECK_EYE_H_M() == 0.0805f);
    CHECK(qlt_Params_USER_NECK_EYE_V_M() == 0.075f);
    CHECK(qlt_Camera_GetWidth(NULL) == 2560 && qlt_Camera_GetHeight(NULL) == 1440);
}

/* Compares a texture coordinate with that of the plain model. */
static void CheckTexture(const qlt_Vec2* texture, int vertex, float u, float v)
{
    /* The arrays are packed floats. */
    const qlt_Vec2* at = (const qlt_Vec2*)((const float*)texture + 2 * vertex);
    CHECK(fabsf(qlt_Vec2_x(at) - u) < 1e-6f);
    CHECK(fabsf(qlt_Vec2_y(at) - v) < 1e-6f);
}

/* The two meshes differ in every argument. */
static void CheckMesh(void)
{
    qlt_DistortionMeshBuilder* left = qlt_DistortionMeshBuilder_New(2, 3, 1, 1);
    qlt_DistortionMeshBuilder* right = qlt_DistortionMeshBuilder_New(4, 2, 0, 0);
    const qlt_Vec3* second;
    CHECK(qlt_DistortionMeshBuilder_GetNumVertices(left) == 0);
    CHECK(qlt_DistortionMeshBuilder_GetPosition(left) == NULL);
    qlt_DistortionMeshBuilder_BuildMesh(left);
    qlt_DistortionMeshBuilder_BuildMesh(right);
    CHECK(qlt_DistortionMeshBuilder_GetNumVertices(left) == 12);
    CHECK(qlt_DistortionMeshBuilder_GetNumIndices(left) == 36);
    CHECK(qlt_DistortionMeshBuilder_GetNumVertices(right) == 15);
    CHECK(qlt_DistortionMeshBuilder_GetNumIndices(right) == 22);
    CHECK(qlt_DistortionMeshBuilder_GetIndices(left)[1] == 3);
    CHECK(qlt_DistortionMeshBuilder_GetIndices(right)[1] == 5);
    second = (const qlt_Vec3*)((const float*)qlt_DistortionMeshBuilder_GetPosition(left) + 3);
    CHECK(qlt_Vec3_x(second) == 0.0f && qlt_Vec3_y(second) == -1.0f && qlt_Vec3_z(second) == -1.1f);
    CheckTexture(qlt_DistortionMeshBuilder_GetTextureR(left), 4, 0.5034533f, 0.4074407f);
    CheckTexture(qlt_DistortionMeshBuilder_GetTextureG(left), 4, 0.5034828f, 0.4066490f);
    CheckTexture(qlt_DistortionMeshBuilder_GetTextureB(left), 4, 0.5035208f, 0.4056293f);
    CheckTexture(qlt_DistortionMeshBuilder_GetTextureR(right), 6, 0.3517364f, 0.5f);
    qlt_DistortionMeshBuilder_Delete(left);
    qlt_DistortionMeshBuilder_Delete(right);
}

static void CheckTracker(void)
{
    qlt_Tracker* headset = qlt_Hmd_New();
    qlt_Tracker* tracker = qlt_SimulationTracker_New();
    qlt_Quaternion* q = qlt_Quaternion_New();
    qlt_Vec3* p = qlt_Vec3_New();
    long waited = 0;
    CHECK(qlt_Tracker_IsConnected(headset) == 0);
    CHECK(qlt_Tracker_IsConnected(tracker) == 1 && qlt_Tracker_IsTracking(tracker) == 0);
    CHECK(qlt_Tracker_Start(tracker) == 1 && qlt_Tracker_IsTracking(tracker) == 1);
    do
    {
        qlt_Tracker_GetOrientation(tracker, q);
    } while (qlt_Quaternion_x(q) == 0.0f && ++waited < 100000000);
    CHECK(qlt_Quaternion_x(q) > 0.0f);
    qlt_Tracker_GetPredictedOrientation(tracker, q, 0.02f);
    CHECK(fabsf(qlt_Quaternion_w(q)) <= 1.0f);
    qlt_Tracker_ResetYawOrigin(tracker);
    qlt_Tracker_GetPosition(tracker, p);
    CHECK(qlt_Vec3_x(p) == 0);
    qlt_Tracker_GetObjectPosition(tracker, p, -1);
    CHECK(qlt_Vec3_x(p) == 0);
    qlt_Tracker_GetObjectOrientation(tracker, q, -1);
    CHECK(qlt_Quaternion_w(q) == 1);
    CHECK(qlt_Tracker_Stop(tracker) == 1);
    qlt_Quaternion_Delete(q);
    qlt_Vec3_Delete(p);
    qlt_Tracker_Delete(tracker);
    qlt_Tracker_Delete(headset);
}

int main(int argc, char** argv)
{
    (void)argv;
    CheckValues();
    CheckParams();
    CheckMesh();
    CheckTracker();
    if (argc > 100) /* never true: a camera without a headset ends the process */
    {
        qlt_Camera* camera = qlt_Camera_New(0);
        qlt_Camera_Update(camera);
        printf("%d\n", (int)qlt_Camera_GetTextureId(camera));
        qlt_Camera_Delete(camera);
    }
    printf("%d failures\n", failures);
    return failures != 0;
}

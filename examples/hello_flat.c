/* This program uses the flat interface from C. It prints about a second of the simulator's motion,
   and then the smallest lens mesh. */
#include <qlt/qlt_c_api.h>

#include <stdio.h>

static void print_orientations(void)
{
    qlt_Tracker* tracker = qlt_SimulationTracker_New(); /* qlt_Hmd_New is the headset */
    qlt_Quaternion* q = qlt_Quaternion_New4(1, 0, 0, 0);
    int step;

    qlt_Tracker_Start(tracker);
    for (step = 0; step < 10; ++step)
    {
        /* C99 cannot sleep, so the loop waits until the head has turned further about x. */
        while (qlt_Quaternion_x(q) < 0.05f * (float)step)
        {
            qlt_Tracker_GetOrientation(tracker, q);
        }
        printf("%.4f %.4f %.4f %.4f\n", qlt_Quaternion_w(q), qlt_Quaternion_x(q),
               qlt_Quaternion_y(q), qlt_Quaternion_z(q));
    }
    qlt_Tracker_Stop(tracker);
    qlt_Quaternion_Delete(q);
    qlt_Tracker_Delete(tracker);
}

static void print_mesh(void)
{
    qlt_DistortionMeshBuilder* mesh = qlt_DistortionMeshBuilder_New(1, 1, 1, 1);
    const int32_t* indices;
    const float* position; /* three numbers per vertex */
    int32_t i;

    qlt_DistortionMeshBuilder_BuildMesh(mesh);
    indices = qlt_DistortionMeshBuilder_GetIndices(mesh);
    position = (const float*)qlt_DistortionMeshBuilder_GetPosition(mesh);
    for (i = 0; i < qlt_DistortionMeshBuilder_GetNumIndices(mesh); ++i)
    {
        const float* vertex = position + 3 * indices[i];
        printf("%d: %.1f %.1f %.1f\n", (int)indices[i], vertex[0], vertex[1], vertex[2]);
    }
    qlt_DistortionMeshBuilder_Delete(mesh);
}

int main(void)
{
    print_orientations();
    print_mesh();
    return 0;
}

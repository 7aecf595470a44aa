/* This program uses the kit from C. It follows a headset in software for a second and prints its
   poses, each with its time in seconds. A name as the argument replaces the source:
   "headset", "simulator", or the file of a script or of a recording. */
#include <qltkit/qltkit_c_api.h>

#include <stdio.h>

/* The library prints nothing, because this function takes its lines. */
static void ignore_line(int32_t level, const char* line, void* user)
{
    (void)level;
    (void)line;
    (void)user;
}

int main(int argc, char** argv)
{
    qltkit_HeadTracker* tracker = NULL;
    qltkit_Sample sample;
    int64_t begin_ns = -1;

    qltkit_set_log_handler(ignore_line, NULL);
    if (qltkit_HeadTracker_Open(argc > 1 ? argv[1] : "simulator", NULL, &tracker) != QLTKIT_OK)
    {
        fprintf(stderr, "%s\n", qltkit_last_error());
        return 1;
    }
    while (qltkit_HeadTracker_NextSample(tracker, 2000, &sample) == QLTKIT_OK)
    {
        const qltkit_Pose* pose = &sample.pose;
        begin_ns = begin_ns < 0 ? pose->timeNs : begin_ns;
        if (pose->reportNumber % 100 == 0)
        {
            printf("%.3f s: %.3f %.3f %.3f %.3f\n", (double)(pose->timeNs - begin_ns) / 1e9,
                   pose->orientation[0], pose->orientation[1], pose->orientation[2],
                   pose->orientation[3]);
        }
        if (pose->timeNs - begin_ns > 1000000000)
        {
            break;
        }
    }
    qltkit_HeadTracker_Delete(tracker);
    qltkit_set_log_handler(NULL, NULL);
    return 0;
}

/** @file
 * QueltaKit for C and for bindings: poses with a time, headsets in software, recordings, captures
 * and the lines of the library.
 *
 * Results: most functions return a qltkit_Result. A negative result is an error, and
 * qltkit_last_error then gives a sentence about it. A function that fails leaves the places of its
 * results unchanged. No C++ exception leaves a function.
 *
 * Handles: a function that opens something gives a handle, which belongs to the caller until the
 * matching ..._Delete. A null handle, or any other null pointer without the word "optional", gives
 * QLTKIT_ERROR_ARGUMENT; a ..._Delete of null does nothing. The objects behind the handles keep
 * what they use alive, so the handles may be deleted in any order.
 *
 * Threads: any thread may call any function. The functions of one reader, and ..._Delete, must not
 * run at the same time as another function on the same handle.
 *
 * Text is UTF-8 and ends with a zero. The names of files are text, too. Orientations are
 * quaternions w, x, y, z, which turn head coordinates into world coordinates: right-handed, x
 * right, y up, -z forward. Units are metres, radians, g, gauss and degrees Celsius. Times with the
 * ending Ns are nanoseconds of a clock that never goes back. */
#ifndef QLTKIT_C_API_H
#define QLTKIT_C_API_H

#include <qltkit/Export.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C"
{
#endif

    typedef int32_t qltkit_Result;

    enum
    {
        QLTKIT_OK = 0,
        QLTKIT_NONE = 1,            /**< there is nothing at present */
        QLTKIT_END = 2,             /**< there is nothing any more */
        QLTKIT_ERROR = -1,          /**< a file, a device or the system has failed */
        QLTKIT_ERROR_ARGUMENT = -2, /**< an argument is null or outside its range */
        QLTKIT_ERROR_MEMORY = -3    /**< there is no memory */
    };

    typedef struct qltkit_HeadTracker qltkit_HeadTracker;
    typedef struct qltkit_ScriptedHeadset qltkit_ScriptedHeadset;
    typedef struct qltkit_Recording qltkit_Recording;
    typedef struct qltkit_CaptureWriter qltkit_CaptureWriter;
    typedef struct qltkit_CaptureReader qltkit_CaptureReader;

    /** The version of the library, for example "1.0.0". */
    QLTKIT_API const char* qltkit_version(void);

    /** The sentence about the last error on this thread, without a full stop. Empty before the
     * first error. It is valid until the next error on this thread. */
    QLTKIT_API const char* qltkit_last_error(void);

    /* ---- What the library says. */

    enum
    {
        QLTKIT_LOG_INFO = 0, /**< progress and statistics; by default on standard output */
        QLTKIT_LOG_ERROR = 1 /**< failures; by default on standard error */
    };

    /** Receives a line without its line end. Any thread may call it, several threads at once may
     * call it, and a tracker may call it with its lock held. So it must not call a tracker, and it
     * must return soon. `line` is valid during the call. */
    typedef void (*qltkit_LogHandler)(int32_t level, const char* line, void* user);

    /** Passes every line that the library prints to `handler`, together with `user`. Null removes
     * the handler, and the library prints again. After this call returns, the previous handler does
     * not run any more: the call waits for it, unless that handler has made this call itself. */
    QLTKIT_API qltkit_Result qltkit_set_log_handler(qltkit_LogHandler handler, void* user);

    /* ---- A headset in software that obeys a script. */

    enum
    {
        QLTKIT_PACE_REAL_TIME = 0, /**< by the machine's clock */
        QLTKIT_PACE_FASTEST = 1    /**< as fast as it is read; its clock follows the reads */
    };

    /** The true values behind the last report that was read. */
    typedef struct qltkit_Truth
    {
        double orientation[4]; /**< of the head; zeros when it is not known */
        int64_t sampleNs;      /**< the moment of the values */
        int64_t arrivalNs;     /**< the moment at which the host should get the report */
        uint32_t sequence;     /**< the number that the headset gave the report */
        int32_t isKnown;       /**< 0 for a recording, whose truth nobody knows, otherwise 1 */
    } qltkit_Truth;

    /** Makes a headset from a file: a script (.json), a capture (.mcap), or reports (.bin). */
    QLTKIT_API qltkit_Result qltkit_ScriptedHeadset_Open(const char* file, int32_t pace,
                                                         qltkit_ScriptedHeadset** headset);
    /** Makes a headset from the text of a script. It cannot name files. */
    QLTKIT_API qltkit_Result qltkit_ScriptedHeadset_Parse(const char* script, int32_t pace,
                                                          qltkit_ScriptedHeadset** headset);
    /** QLTKIT_END when the last report has been read, otherwise QLTKIT_OK. */
    QLTKIT_API qltkit_Result qltkit_ScriptedHeadset_State(const qltkit_ScriptedHeadset* headset);
    QLTKIT_API qltkit_Result qltkit_ScriptedHeadset_Truth(const qltkit_ScriptedHeadset* headset,
                                                          qltkit_Truth* truth);
    QLTKIT_API void qltkit_ScriptedHeadset_Delete(qltkit_ScriptedHeadset* headset);

    /* ---- Poses with a time. */

    enum
    {
        QLTKIT_FILTER_KIT = 0, /**< the kit's estimator */
        QLTKIT_FILTER_CORE = 1 /**< the core's filter */
    };

    enum
    {
        QLTKIT_NEVER_SEEN = 0, /**< no report has arrived yet */
        QLTKIT_TRACKING = 1,   /**< reports arrive */
        QLTKIT_HELD = 2,       /**< the last report is older than 100 ms, but no read has failed */
        QLTKIT_LOST = 3        /**< the headset was unplugged, or a read failed */
    };

    enum
    {
        QLTKIT_CONNECTED = 0, /**< the first report has arrived */
        QLTKIT_WAS_LOST = 1,  /**< a read has failed */
        QLTKIT_BACK = 2,      /**< the first report after a loss has arrived */
        QLTKIT_GAP = 3        /**< reports are missing before the newest one */
    };

    enum
    {
        QLTKIT_EYE_LEFT = 0,
        QLTKIT_EYE_RIGHT = 1
    };

    /** The measures of a user in metres: between the pupils, and from the neck to the eyes, forward
     * (H) and up (V). */
    typedef struct qltkit_Person
    {
        float ipdM;
        float neckEyeHM;
        float neckEyeVM;
    } qltkit_Person;

    typedef struct qltkit_HeadTrackerOptions
    {
        int32_t filter;                /**< QLTKIT_FILTER_... */
        qltkit_Person person;          /**< of qltkit_HeadTracker_EyePose */
        qltkit_CaptureWriter* capture; /**< optional: gets every report, connection and loss */
    } qltkit_HeadTrackerOptions;

    typedef struct qltkit_Pose
    {
        float orientation[4];
        float angularVelocity[3]; /**< about the head's own axes, radians per second */
        int32_t state;         /**< of the tracker at the time of the call: QLTKIT_TRACKING ... */
        int64_t timeNs;        /**< the moment at which the pose is true */
        int64_t deviceTimeUs;  /**< the same moment by the headset's clock without its wrap */
        int64_t sinceNs;       /**< the beginning of the state */
        uint64_t reportNumber; /**< of the last report in the pose, counted from 1 */
        uint32_t sequence;     /**< the number that the headset gave that report */
        int32_t clamped;       /**< 1 when timeNs is the nearest known time, otherwise 0 */
    } qltkit_Pose;

    typedef struct qltkit_EyePose
    {
        float position[3]; /**< from the neck, metres */
        float orientation[4];
    } qltkit_EyePose;

    /** A report of the headset, and the pose that includes it. */
    typedef struct qltkit_Sample
    {
        qltkit_Pose pose;
        int64_t arrivalNs;      /**< when the host has got the report */
        float gyroscope[3];     /**< radians per second */
        float accelerometer[3]; /**< g */
        float magnetometer[3];  /**< gauss */
        float temperature;      /**< degrees Celsius */
        uint8_t report[64];     /**< the bytes of the report */
    } qltkit_Sample;

    typedef struct qltkit_TrackerEvent
    {
        int32_t kind;     /**< QLTKIT_CONNECTED ... */
        uint32_t reports; /**< of a gap: the number of missing reports */
        int64_t timeNs;   /**< when the tracker noticed it */
        uint64_t number;  /**< from 1; a larger step means that events were not fetched in time */
    } qltkit_TrackerEvent;

    /** A thread of the tracker calls it for each event. It must not delete the tracker. */
    typedef void (*qltkit_EventHandler)(const qltkit_TrackerEvent* event, void* user);

    /** Fills in the kit's filter and the default person, without a capture. */
    QLTKIT_API qltkit_Result qltkit_HeadTrackerOptions_Init(qltkit_HeadTrackerOptions* options);

    /** Tracks a source: "headset", "simulator", or a file as qltkit_ScriptedHeadset_Open takes it,
     * in real time. The options are optional. A headset may be plugged in at any time. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_Open(const char* source,
                                                     const qltkit_HeadTrackerOptions* options,
                                                     qltkit_HeadTracker** tracker);
    /** Tracks a headset in software, once: when the tracker is deleted, the headset is closed. The
     * options are optional. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_OpenScripted(
        qltkit_ScriptedHeadset* headset, const qltkit_HeadTrackerOptions* options,
        qltkit_HeadTracker** tracker);
    /** Stops the tracking. The call waits for a running event handler. */
    QLTKIT_API void qltkit_HeadTracker_Delete(qltkit_HeadTracker* tracker);

    /** The pose of the last report. Before the first report the state is QLTKIT_NEVER_SEEN and the
     * orientation is the identity. Never waits. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_Latest(const qltkit_HeadTracker* tracker,
                                                       qltkit_Pose* pose);
    /** The pose at a time of the tracker's clock: interpolated in the last two seconds of reports,
     * predicted up to 100 ms after the last report, and clamped outside. Never waits. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_At(const qltkit_HeadTracker* tracker,
                                                   int64_t timeNs, qltkit_Pose* pose);
    /** The pose of an eye (QLTKIT_EYE_...) of the tracker's person, for a pose of the head. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_EyePose(const qltkit_HeadTracker* tracker,
                                                        const qltkit_Pose* pose, int32_t eye,
                                                        qltkit_EyePose* eyePose);
    /** The next sample that this function has not given yet, with at most two seconds of delay;
     * older samples are lost, which the report numbers show. Waits for it up to `timeoutMs`
     * milliseconds. QLTKIT_NONE when none has come, QLTKIT_END when a file or a script has ended.
     * A headset of QLTKIT_PACE_FASTEST may be faster than its reader. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_NextSample(qltkit_HeadTracker* tracker,
                                                           int32_t timeoutMs,
                                                           qltkit_Sample* sample);
    /** The oldest event that this function has not given yet. QLTKIT_NONE when there is none. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_NextEvent(qltkit_HeadTracker* tracker,
                                                          qltkit_TrackerEvent* event);
    /** Passes each event to `handler` a few milliseconds later, together with `user`. The first
     * handler gets all events so far. Null removes the handler. After this call returns, the
     * previous handler does not run any more, unless that handler has made this call itself. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_SetEventHandler(qltkit_HeadTracker* tracker,
                                                                qltkit_EventHandler handler,
                                                                void* user);
    /** Makes the current heading the forward direction; pitch and roll stay. QLTKIT_NONE before the
     * first report. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_Recentre(qltkit_HeadTracker* tracker);
    /** The current time of the tracker's clock. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_Now(const qltkit_HeadTracker* tracker,
                                                    int64_t* timeNs);
    /** The error of predictions for 0 to 0.1 s ahead, as a root mean square in radians: over all
     * reports, and over about the last five seconds. Either place is optional. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_PredictionError(const qltkit_HeadTracker* tracker,
                                                                double seconds, double* all,
                                                                double* recent);

    /* ---- Recordings as columns. */

    /** The columns of a recording, with `count` rows each. A vector takes three neighbours, x, y
     * and z, and a report takes 64. The arrays belong to the recording. */
    typedef struct qltkit_Columns
    {
        uint64_t count;
        const int64_t*
            hostTimeNs; /**< by the clock of the writer; null in a file of mere reports */
        const int64_t* deviceTimeUs; /**< the headset's clock without its wrap */
        const uint32_t* sequence;
        const float* gyroscope;     /**< radians per second */
        const float* accelerometer; /**< g */
        const float* magnetometer;  /**< gauss */
        const float* temperature;   /**< degrees Celsius */
        const uint8_t* reports;
    } qltkit_Columns;

    /** Reads the reports of a capture or of a file of reports into memory. */
    QLTKIT_API qltkit_Result qltkit_Recording_Open(const char* file, qltkit_Recording** recording);
    QLTKIT_API qltkit_Result qltkit_Recording_Columns(const qltkit_Recording* recording,
                                                      qltkit_Columns* columns);
    /** A sentence about a damaged or missing part of the file, by its index from 0; null after the
     * last one, and for a null recording. It belongs to the recording. */
    QLTKIT_API const char* qltkit_Recording_Problem(const qltkit_Recording* recording,
                                                    uint64_t index);
    /** Computes the orientation after each report with a filter (QLTKIT_FILTER_...) into
     * `orientations`, which has room for four floats per report. QLTKIT_FILTER_CORE gives the bits
     * of "qlt replay --csv". */
    QLTKIT_API qltkit_Result qltkit_Recording_Replay(const qltkit_Recording* recording,
                                                     int32_t filter, float* orientations);
    QLTKIT_API void qltkit_Recording_Delete(qltkit_Recording* recording);

    /* ---- Captures: MCAP files with everything that a headset did. */

    enum
    {
        QLTKIT_ITEM_REPORT = 0,
        QLTKIT_ITEM_EVENT = 1, /**< name and text are set */
        QLTKIT_ITEM_TEXT = 2,  /**< level and text are set */
        QLTKIT_ITEM_FRAME = 3, /**< frame is set */
        QLTKIT_ITEM_OTHER = 4  /**< of a foreign channel: only times, topic and data are set */
    };

/** The host time of an item that is added: the current time of the machine. */
#define QLTKIT_NOW INT64_MIN

    /** A picture of the camera. The first row is the top row. */
    typedef struct qltkit_Frame
    {
        uint32_t width;
        uint32_t height;
        uint32_t step;         /**< bytes from one row to the next */
        uint32_t size;         /**< bytes of the pixels: step * height */
        const char* encoding;  /**< "mono8" or another encoding of Foxglove's RawImage */
        const uint8_t* pixels; /**< null when there is no frame */
    } qltkit_Frame;

    /** A message of a capture. The pointers are valid until the reader's next call. */
    typedef struct qltkit_CaptureItem
    {
        int32_t kind;       /**< QLTKIT_ITEM_... */
        int32_t level;      /**< 1 debug, 2 information, 3 warning, 4 error, 5 fatal, 0 unknown */
        int64_t hostTimeNs; /**< by the steady clock of the writer's machine */
        uint64_t logTimeNs; /**< the same moment as Unix time */
        uint64_t publishTimeNs; /**< Unix time at the pace of the headset's clock */
        int64_t deviceTimeUs;   /**< of a report */
        uint32_t sequence;      /**< of a report */
        uint32_t size;          /**< bytes of the data */
        uint8_t report[64];     /**< of a report */
        const char* topic;
        const char* name;
        const char* text;
        const uint8_t* data; /**< the bytes of the message in the file */
        qltkit_Frame frame;
    } qltkit_CaptureItem;

    typedef struct qltkit_CaptureStatus
    {
        uint64_t reports;        /**< accepted; some of them may not be on the disk yet */
        uint64_t writtenReports; /**< given to the system */
        uint64_t droppedReports; /**< dropped because there was no room */
        uint64_t droppedOthers;  /**< dropped events, texts and frames */
    } qltkit_CaptureStatus;

    /** Opens a capture and reads up to its first item. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Open(const char* file,
                                                       qltkit_CaptureReader** reader);
    /** Reads the next item. QLTKIT_END after the last one. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Next(qltkit_CaptureReader* reader,
                                                       qltkit_CaptureItem* item);
    /** An entry of the metadata that was read so far, by its index from 0: the name of its record,
     * its key and its value, which are valid until the reader's next call. The record "capture" is
     * the writer's. QLTKIT_END after the last entry. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Metadata(qltkit_CaptureReader* reader,
                                                           uint64_t index, const char** record,
                                                           const char** key, const char** value);
    /** A sentence about a damaged or missing part that was met so far, by its index from 0, and the
     * offset of that part in the file; at most a hundred. QLTKIT_END after the last one. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Problem(qltkit_CaptureReader* reader,
                                                          uint64_t index, uint64_t* offset,
                                                          const char** text);
    /** The current position and the size of the file in bytes. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Position(qltkit_CaptureReader* reader,
                                                           uint64_t* position, uint64_t* size);
    QLTKIT_API void qltkit_CaptureReader_Delete(qltkit_CaptureReader* reader);

    /** Creates a capture, which has a temporary name beside `file` until it is closed. `metadata`
     * is optional: keys and values by turns, and null at the end. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_Open(const char* file,
                                                       const char* const* metadata,
                                                       qltkit_CaptureWriter** writer);
    /** Add an item with its host time, or with QLTKIT_NOW. They never wait; what finds no room is
     * dropped and counted. A report has 64 bytes. The detail of an event is optional. The level of
     * a text is that of qltkit_CaptureItem. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_AddReport(qltkit_CaptureWriter* writer,
                                                            const uint8_t* report,
                                                            int64_t hostTimeNs);
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_AddEvent(qltkit_CaptureWriter* writer,
                                                           const char* name, const char* detail,
                                                           int64_t hostTimeNs);
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_AddText(qltkit_CaptureWriter* writer,
                                                          int32_t level, const char* text,
                                                          int64_t hostTimeNs);
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_AddFrame(qltkit_CaptureWriter* writer,
                                                           const qltkit_Frame* frame,
                                                           int64_t hostTimeNs);
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_Status(const qltkit_CaptureWriter* writer,
                                                         qltkit_CaptureStatus* status);
    /** Gives all added items to the system, and waits for the disk. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_Flush(qltkit_CaptureWriter* writer);
    /** Completes the capture and gives the file its name. The error says where the file is when
     * something could not be written. Items that are added later are lost. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_Close(qltkit_CaptureWriter* writer);
    /** Closes the capture when it is open, and forgets the errors. */
    QLTKIT_API void qltkit_CaptureWriter_Delete(qltkit_CaptureWriter* writer);

#ifdef __cplusplus
}
#endif

#endif

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
 * Threads: any thread may call any function. Two functions of one reader must not run at the same
 * time, nor Flush and Close of one writer. No function may use a handle during its ..._Delete.
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

    /** The result of a function: one of the values below. A negative value is an error. */
    typedef int32_t qltkit_Result;

    enum
    {
        /** The function has succeeded. */
        QLTKIT_OK = 0,
        /** There is nothing at present. */
        QLTKIT_NONE = 1,
        /** There is nothing any more. */
        QLTKIT_END = 2,
        /** A file, a device or the system has failed. */
        QLTKIT_ERROR = -1,
        /** An argument is null or outside its range. */
        QLTKIT_ERROR_ARGUMENT = -2,
        /** There is no memory. */
        QLTKIT_ERROR_MEMORY = -3
    };

    /** A tracker of a head. It gives poses, samples and events. */
    typedef struct qltkit_HeadTracker qltkit_HeadTracker;
    /** A headset in software that obeys a script. */
    typedef struct qltkit_ScriptedHeadset qltkit_ScriptedHeadset;
    /** The reports of a file, in memory. */
    typedef struct qltkit_Recording qltkit_Recording;
    /** A capture that is being written. */
    typedef struct qltkit_CaptureWriter qltkit_CaptureWriter;
    /** A capture that is being read. */
    typedef struct qltkit_CaptureReader qltkit_CaptureReader;

    /** The version of the library, for example "1.0.0". The text exists as long as the library is
     * loaded. */
    QLTKIT_API const char* qltkit_version(void);

    /** The sentence about the last error on this thread, without a full stop. Empty before the
     * first error. It is valid until the next error on this thread. */
    QLTKIT_API const char* qltkit_last_error(void);

    /* ---- The lines that the library prints. */

    enum
    {
        /** Progress and statistics. Without a handler they go to standard output. */
        QLTKIT_LOG_INFO = 0,
        /** Failures. Without a handler they go to standard error. */
        QLTKIT_LOG_ERROR = 1
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
        /** The script runs by the machine's clock. */
        QLTKIT_PACE_REAL_TIME = 0,
        /** The script runs as fast as it is read. Its clock follows the reads. */
        QLTKIT_PACE_FASTEST = 1
    };

    /** The true values behind the last report that was read. */
    typedef struct qltkit_Truth
    {
        /** The rotation of the head as w, x, y, z. It is four zeros when it is not known. */
        double orientation[4];
        /** The moment of the values in nanoseconds of the headset's clock. */
        int64_t sampleNs;
        /** The moment at which the host should get the report, by the same clock. */
        int64_t arrivalNs;
        /** The number that the headset gave the report. */
        uint32_t sequence;
        /** 1 when the orientation is known, and 0 for a recording. */
        int32_t isKnown;
    } qltkit_Truth;

    /** Makes a headset from a file: a script (.json), a capture (.mcap), or reports (.bin). `pace`
     * is QLTKIT_PACE_REAL_TIME or QLTKIT_PACE_FASTEST. QLTKIT_ERROR when the file cannot be read
     * or is no such file. */
    QLTKIT_API qltkit_Result qltkit_ScriptedHeadset_Open(const char* file, int32_t pace,
                                                         qltkit_ScriptedHeadset** headset);
    /** Makes a headset from the JSON text of a script. The script cannot name files. QLTKIT_ERROR
     * when the text is no script; the sentence names the line and the field. */
    QLTKIT_API qltkit_Result qltkit_ScriptedHeadset_Parse(const char* script, int32_t pace,
                                                          qltkit_ScriptedHeadset** headset);
    /** Returns QLTKIT_END when the last report has been read, and otherwise QLTKIT_OK. */
    QLTKIT_API qltkit_Result qltkit_ScriptedHeadset_State(const qltkit_ScriptedHeadset* headset);
    /** Gives the true values behind the last whole report that was read. Before the first report
     * all of them are 0. */
    QLTKIT_API qltkit_Result qltkit_ScriptedHeadset_Truth(const qltkit_ScriptedHeadset* headset,
                                                          qltkit_Truth* truth);
    /** Deletes the handle. The headset itself ends with its last tracker. */
    QLTKIT_API void qltkit_ScriptedHeadset_Delete(qltkit_ScriptedHeadset* headset);

    /* ---- Poses with a time. */

    enum
    {
        /** The kit's estimator. */
        QLTKIT_FILTER_KIT = 0,
        /** The core's filter. */
        QLTKIT_FILTER_CORE = 1
    };

    enum
    {
        /** No report has arrived yet. */
        QLTKIT_NEVER_SEEN = 0,
        /** Reports arrive. */
        QLTKIT_TRACKING = 1,
        /** The last report is older than 100 ms, but no read has failed. */
        QLTKIT_HELD = 2,
        /** The headset was unplugged, or a read failed. */
        QLTKIT_LOST = 3
    };

    enum
    {
        /** The first report has arrived. */
        QLTKIT_CONNECTED = 0,
        /** A read has failed. */
        QLTKIT_WAS_LOST = 1,
        /** The first report after a loss has arrived. */
        QLTKIT_BACK = 2,
        /** Reports are missing before the newest one. */
        QLTKIT_GAP = 3
    };

    enum
    {
        /** The left eye. */
        QLTKIT_EYE_LEFT = 0,
        /** The right eye. */
        QLTKIT_EYE_RIGHT = 1
    };

    /** The measures of a user in metres. The head turns about the neck. */
    typedef struct qltkit_Person
    {
        /** The distance between the pupils. */
        float ipdM;
        /** The forward distance from the neck to the eyes. */
        float neckEyeHM;
        /** The upward distance from the neck to the eyes. */
        float neckEyeVM;
    } qltkit_Person;

    /** The options of a tracker. qltkit_HeadTrackerOptions_Init fills in the defaults. */
    typedef struct qltkit_HeadTrackerOptions
    {
        /** The filter of the poses: QLTKIT_FILTER_KIT or QLTKIT_FILTER_CORE. */
        int32_t filter;
        /** The measures that qltkit_HeadTracker_EyePose uses. */
        qltkit_Person person;
        /** Optional: this capture gets every report, connection and loss. */
        qltkit_CaptureWriter* capture;
    } qltkit_HeadTrackerOptions;

    /** The pose of the head at one moment of the tracker's clock. */
    typedef struct qltkit_Pose
    {
        /** The rotation of the head as w, x, y, z. It is the identity before the first report. */
        float orientation[4];
        /** The angular velocity about the head's own axes in radians per second. */
        float angularVelocity[3];
        /** The state of the tracker at the time of the call: QLTKIT_NEVER_SEEN to QLTKIT_LOST. */
        int32_t state;
        /** The moment of the pose in nanoseconds of the tracker's clock. */
        int64_t timeNs;
        /** The same moment in microseconds of the headset's clock without its wrap. */
        int64_t deviceTimeUs;
        /** The beginning of the state in nanoseconds of the tracker's clock. */
        int64_t sinceNs;
        /** The number of reports so far, up to the last report that the pose includes. */
        uint64_t reportNumber;
        /** The number that the headset gave that report. */
        uint32_t sequence;
        /** 1 when timeNs is the nearest known time and not the requested one; otherwise 0. */
        int32_t clamped;
    } qltkit_Pose;

    /** The pose of an eye in the world. */
    typedef struct qltkit_EyePose
    {
        /** The position in metres from the neck. */
        float position[3];
        /** The rotation of the eye as w, x, y, z, which is that of the head. */
        float orientation[4];
    } qltkit_EyePose;

    /** A report of the headset, and the pose that includes it. */
    typedef struct qltkit_Sample
    {
        /** The pose after the report. */
        qltkit_Pose pose;
        /** The moment at which the host got the report, in nanoseconds of the tracker's clock. */
        int64_t arrivalNs;
        /** The calibrated angular velocity in radians per second. */
        float gyroscope[3];
        /** The calibrated acceleration in g. */
        float accelerometer[3];
        /** The magnetic field in gauss. */
        float magnetometer[3];
        /** The temperature of the sensor in degrees Celsius. */
        float temperature;
        /** The bytes of the report. */
        uint8_t report[64];
    } qltkit_Sample;

    /** A change in the stream of reports. */
    typedef struct qltkit_TrackerEvent
    {
        /** The kind of the event: QLTKIT_CONNECTED to QLTKIT_GAP. */
        int32_t kind;
        /** The number of missing reports of a gap, and 0 for the other kinds. */
        uint32_t reports;
        /** The moment at which the tracker noticed the change, in nanoseconds of its clock. */
        int64_t timeNs;
        /** The number of the event, from 1. A step of more than one means that events were not
         * fetched in time. */
        uint64_t number;
    } qltkit_TrackerEvent;

    /** Receives an event. A thread of the tracker calls it. It must not delete the tracker. `event`
     * is valid during the call. */
    typedef void (*qltkit_EventHandler)(const qltkit_TrackerEvent* event, void* user);

    /** Fills in the defaults: the kit's filter and the default person, without a capture. */
    QLTKIT_API qltkit_Result qltkit_HeadTrackerOptions_Init(qltkit_HeadTrackerOptions* options);

    /** Tracks a source: "headset", "simulator", or a file as qltkit_ScriptedHeadset_Open takes it,
     * in real time. `options` is optional. The headset may be plugged in at any time. QLTKIT_ERROR
     * when the name is unknown or the file cannot be read. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_Open(const char* source,
                                                     const qltkit_HeadTrackerOptions* options,
                                                     qltkit_HeadTracker** tracker);
    /** Tracks a headset in software, once: the deletion of the tracker also closes the headset.
     * `options` is optional. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_OpenScripted(
        qltkit_ScriptedHeadset* headset, const qltkit_HeadTrackerOptions* options,
        qltkit_HeadTracker** tracker);
    /** Stops the tracking and deletes the tracker. The call waits for a running event handler. */
    QLTKIT_API void qltkit_HeadTracker_Delete(qltkit_HeadTracker* tracker);

    /** Gives the pose of the last report. Before the first report the state is QLTKIT_NEVER_SEEN
     * and the orientation is the identity. The call never waits. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_Latest(const qltkit_HeadTracker* tracker,
                                                       qltkit_Pose* pose);
    /** Gives the pose at `timeNs`, in nanoseconds of the tracker's clock. It is interpolated in the
     * last two seconds of reports, and predicted up to 100 ms after the last report. Outside these
     * limits it is clamped. The call never waits. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_At(const qltkit_HeadTracker* tracker,
                                                   int64_t timeNs, qltkit_Pose* pose);
    /** Gives the pose of an eye of the tracker's person, for a pose of the head. `eye` is
     * QLTKIT_EYE_LEFT or QLTKIT_EYE_RIGHT. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_EyePose(const qltkit_HeadTracker* tracker,
                                                        const qltkit_Pose* pose, int32_t eye,
                                                        qltkit_EyePose* eyePose);
    /** Gives the oldest sample that this function has not given yet. It keeps the samples of two
     * seconds; the report numbers show whether older ones were lost. The call waits for a sample
     * up to `timeoutMs` milliseconds. QLTKIT_NONE when none has come, and QLTKIT_END when a file
     * or a script has ended. A headset of QLTKIT_PACE_FASTEST may be faster than its reader. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_NextSample(qltkit_HeadTracker* tracker,
                                                           int32_t timeoutMs,
                                                           qltkit_Sample* sample);
    /** Gives the oldest event that this function has not given yet. QLTKIT_NONE when there is none.
     * The call does not wait for an event. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_NextEvent(qltkit_HeadTracker* tracker,
                                                          qltkit_TrackerEvent* event);
    /** Passes each event to `handler` a few milliseconds later, together with `user`. The first
     * handler gets all events so far. Null removes the handler. After this call returns, the
     * previous handler does not run any more, unless that handler has made this call itself. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_SetEventHandler(qltkit_HeadTracker* tracker,
                                                                qltkit_EventHandler handler,
                                                                void* user);
    /** Makes the current heading the forward direction and keeps pitch and roll. QLTKIT_NONE before
     * the first report. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_Recentre(qltkit_HeadTracker* tracker);
    /** Gives the current time of the tracker's clock in nanoseconds. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_Now(const qltkit_HeadTracker* tracker,
                                                    int64_t* timeNs);
    /** Gives the error of predictions for `seconds` ahead, as a root mean square in radians.
     * `seconds` is clamped to 0 .. 0.1. `all` covers all reports, and `recent` covers about the
     * last five seconds. Both places are optional. */
    QLTKIT_API qltkit_Result qltkit_HeadTracker_PredictionError(const qltkit_HeadTracker* tracker,
                                                                double seconds, double* all,
                                                                double* recent);

    /* ---- Recordings as columns. */

    /** The columns of a recording, with `count` rows each. The arrays belong to the recording and
     * are valid until it is deleted. */
    typedef struct qltkit_Columns
    {
        /** The number of reports. */
        uint64_t count;
        /** The times by the clock of the writer in nanoseconds. Null for a file that contains only
         * reports. */
        const int64_t* hostTimeNs;
        /** The headset's clock in microseconds without its wrap. */
        const int64_t* deviceTimeUs;
        /** The numbers that the headset gave the reports. */
        const uint32_t* sequence;
        /** The calibrated angular velocities in radians per second: x, y and z of each report. */
        const float* gyroscope;
        /** The calibrated accelerations in g: x, y and z of each report. */
        const float* accelerometer;
        /** The magnetic fields in gauss: x, y and z of each report. */
        const float* magnetometer;
        /** The temperatures in degrees Celsius. */
        const float* temperature;
        /** The reports, 64 bytes each. */
        const uint8_t* reports;
    } qltkit_Columns;

    /** Reads the reports of a capture or of a file of reports into memory. QLTKIT_ERROR when the
     * file cannot be read or contains no report. */
    QLTKIT_API qltkit_Result qltkit_Recording_Open(const char* file, qltkit_Recording** recording);
    /** Gives the columns of the recording. Nothing is copied. */
    QLTKIT_API qltkit_Result qltkit_Recording_Columns(const qltkit_Recording* recording,
                                                      qltkit_Columns* columns);
    /** Returns a sentence about a damaged or missing part of the file, by its index from 0. Null
     * after the last one, and for a null recording. The text belongs to the recording. */
    QLTKIT_API const char* qltkit_Recording_Problem(const qltkit_Recording* recording,
                                                    uint64_t index);
    /** Computes the orientation after each report with a filter (QLTKIT_FILTER_...). `orientations`
     * must have room for four floats per report: w, x, y and z. QLTKIT_FILTER_CORE gives the bits
     * of "qlt replay --csv". */
    QLTKIT_API qltkit_Result qltkit_Recording_Replay(const qltkit_Recording* recording,
                                                     int32_t filter, float* orientations);
    /** Deletes the recording and its columns. */
    QLTKIT_API void qltkit_Recording_Delete(qltkit_Recording* recording);

    /* ---- Captures: MCAP files with the reports of a headset and everything that came with them.
     */

    enum
    {
        /** A report: deviceTimeUs, sequence and report are set. */
        QLTKIT_ITEM_REPORT = 0,
        /** An event: name and text are set. */
        QLTKIT_ITEM_EVENT = 1,
        /** A text of the library: level and text are set. */
        QLTKIT_ITEM_TEXT = 2,
        /** A frame of the camera: frame is set. */
        QLTKIT_ITEM_FRAME = 3,
        /** An item of a foreign channel: only times, topic and data are set. */
        QLTKIT_ITEM_OTHER = 4
    };

/** The host time of an item that is added: the current time of the machine. */
#define QLTKIT_NOW INT64_MIN

    /** A picture of the camera. The first row is the top row. */
    typedef struct qltkit_Frame
    {
        /** The number of pixels in a row. */
        uint32_t width;
        /** The number of rows. */
        uint32_t height;
        /** The number of bytes from one row to the next. */
        uint32_t step;
        /** The number of bytes of the pixels: step * height. */
        uint32_t size;
        /** The format of a pixel: "mono8" or another encoding of Foxglove's RawImage. */
        const char* encoding;
        /** The pixels. Null when there is no frame. */
        const uint8_t* pixels;
    } qltkit_Frame;

    /** A message of a capture. The pointers are valid until the reader's next call. */
    typedef struct qltkit_CaptureItem
    {
        /** The kind of the item: QLTKIT_ITEM_REPORT to QLTKIT_ITEM_OTHER. */
        int32_t kind;
        /** The severity of a text: 1 debug, 2 information, 3 warning, 4 error, 5 fatal. It is 0
         * when it is unknown. */
        int32_t level;
        /** The time by the steady clock of the writer's machine, in nanoseconds. */
        int64_t hostTimeNs;
        /** The same moment as Unix time in nanoseconds. */
        uint64_t logTimeNs;
        /** Unix time in nanoseconds at the pace of the headset's clock. */
        uint64_t publishTimeNs;
        /** The headset's clock of a report in microseconds without its wrap. */
        int64_t deviceTimeUs;
        /** The number that the headset gave a report. */
        uint32_t sequence;
        /** The number of bytes of the data. */
        uint32_t size;
        /** The bytes of a report. */
        uint8_t report[64];
        /** The topic of the channel, for example "/raw". */
        const char* topic;
        /** The name of an event, for example "connected". */
        const char* name;
        /** The detail of an event, or the text. */
        const char* text;
        /** The bytes of the message in the file. */
        const uint8_t* data;
        /** The frame of the camera. */
        qltkit_Frame frame;
    } qltkit_CaptureItem;

    /** The numbers of a writer. */
    typedef struct qltkit_CaptureStatus
    {
        /** The reports that were accepted. Some of them may not be on the disk yet. */
        uint64_t reports;
        /** The reports that the system has taken. */
        uint64_t writtenReports;
        /** The reports that were dropped because there was no room. */
        uint64_t droppedReports;
        /** The events, texts and frames that were dropped because there was no room. */
        uint64_t droppedOthers;
    } qltkit_CaptureStatus;

    /** Opens a capture and reads up to its first item. QLTKIT_ERROR when the file cannot be read,
     * is no MCAP file, or begins with a compressed chunk. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Open(const char* file,
                                                       qltkit_CaptureReader** reader);
    /** Reads the next item. QLTKIT_END after the last one. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Next(qltkit_CaptureReader* reader,
                                                       qltkit_CaptureItem* item);
    /** Gives an entry of the metadata that was read so far, by its index from 0: the name of its
     * record, its key and its value. The texts are valid until the reader's next call. The record
     * "capture" comes from the writer. QLTKIT_END after the last entry. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Metadata(qltkit_CaptureReader* reader,
                                                           uint64_t index, const char** record,
                                                           const char** key, const char** value);
    /** Gives a sentence about a damaged or missing part that was found so far, by its index from 0,
     * and the offset of that part in the file. There are at most a hundred. QLTKIT_END after the
     * last one. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Problem(qltkit_CaptureReader* reader,
                                                          uint64_t index, uint64_t* offset,
                                                          const char** text);
    /** Gives the current position and the size of the file in bytes. */
    QLTKIT_API qltkit_Result qltkit_CaptureReader_Position(qltkit_CaptureReader* reader,
                                                           uint64_t* position, uint64_t* size);
    /** Closes the file and deletes the reader. */
    QLTKIT_API void qltkit_CaptureReader_Delete(qltkit_CaptureReader* reader);

    /** Creates a capture, which has a temporary name beside `file` until it is closed. `metadata`
     * is optional: it contains keys, each followed by its value, and ends with null. QLTKIT_ERROR
     * when the file cannot be created. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_Open(const char* file,
                                                       const char* const* metadata,
                                                       qltkit_CaptureWriter** writer);
    /** Adds the 64 bytes of a report. `hostTimeNs` is a time of the machine's steady clock in
     * nanoseconds, or QLTKIT_NOW. The call never waits. A report without room is dropped and
     * counted. The same holds for the other items. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_AddReport(qltkit_CaptureWriter* writer,
                                                            const uint8_t* report,
                                                            int64_t hostTimeNs);
    /** Adds an event. `detail` is optional. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_AddEvent(qltkit_CaptureWriter* writer,
                                                           const char* name, const char* detail,
                                                           int64_t hostTimeNs);
    /** Adds a text with a severity of 0 to 5, as in qltkit_CaptureItem. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_AddText(qltkit_CaptureWriter* writer,
                                                          int32_t level, const char* text,
                                                          int64_t hostTimeNs);
    /** Adds a copy of a frame. QLTKIT_ERROR when its size is not step * height bytes or exceeds 4
     * MiB. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_AddFrame(qltkit_CaptureWriter* writer,
                                                           const qltkit_Frame* frame,
                                                           int64_t hostTimeNs);
    /** Gives the numbers of the writer. */
    QLTKIT_API qltkit_Result qltkit_CaptureWriter_Status(const qltkit_CaptureWriter* writer,
                                                         qltkit_CaptureStatus* status);
    /** Gives all added items to the system and waits until that is done. QLTKIT_ERROR when the
     * system does not take them at present. */
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

/* The Spark plug-in interface as a plug-in sees it: the records a host hands
 * over, the control structures a plug-in exports, and the host functions it
 * may call. Both sides of the boundary include this header and nothing else
 * of each other. */
#ifndef SPARK_SPARK_H
#define SPARK_SPARK_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Marks the plug-in's entry points and control structures: the only symbols
 * a plug-in exports (everything else is built hidden). */
#define SPARK_EXPORT __attribute__((visibility("default")))

/* ------------------------------------------------------------------------ */
/* Records                                                                   */
/* ------------------------------------------------------------------------ */

#define SPARK_SETUP_PATH_MAX 4096

/* The info record the host passes by value to the entry points and to every
 * control callback. Exactly 4200 bytes; the offsets are part of the ABI. */
typedef struct SparkInfoStruct {
    /* 0: host-private. Our host keeps the setup file's path here; the
     * plug-in only hands the record's address to sparkLoadSetup and
     * sparkSaveSetup. */
    char SetupPath[SPARK_SETUP_PATH_MAX];
    int32_t ViewerOffsetX;   /* 4096: viewer translation, x (viewer pixels) */
    int32_t ViewerOffsetY;   /* 4100: viewer translation, y */
    int32_t ViewerWidth;     /* 4104: viewer window width in pixels */
    int32_t ViewerHeight;    /* 4108: viewer window height in pixels */
    float ViewerZoom;        /* 4112: the zoom the host will pass to SparkOverlay */
    int32_t Reserved0;       /* 4116 */
    uint8_t ViewerState;     /* 4120: 1 while the viewer shows the plug-in's
                                result and accepts interaction, else 0 */
    uint8_t Reserved1[3];    /* 4121 */
    uint32_t FrameNo;        /* 4124: frame being processed, 0-based */
    uint32_t TotalFrames;    /* 4128: number of frames in the clip */
    int32_t FrameWidth;      /* 4132: full-resolution width in pixels */
    int32_t FrameHeight;     /* 4136: full-resolution height in pixels */
    int32_t FrameDepth;      /* 4140: bits per pixel: 24 (8-bit RGB) or 48 (12-bit in 16) */
    int32_t Reserved2;       /* 4144 */
    int8_t NumProcessors;    /* 4148: processors the host forks work over */
    uint8_t Reserved3[51];   /* 4149..4199 */
} SparkInfoStruct;

/* A frame buffer handed out by sparkMemGetBuffer. */
typedef struct SparkMemBufStruct {
    int32_t BufId;       /* the id asked for (1 output, 2..5 the input clips) */
    void *Buffer;        /* address of the packed RGB pixels, row 0 first */
    int32_t BufWidth;    /* width in pixels */
    int32_t BufHeight;   /* height in pixels */
    int32_t BufDepth;    /* bits per pixel, as FrameDepth */
    int32_t Reserved;
    size_t BufSize;      /* bytes of Buffer */
} SparkMemBufStruct;

/* Graph set-up: what the host knows of the picture's geometry. */
typedef struct SparkGraphInfoStruct {
    float PixelAspectRatio;   /* width of a pixel over its height */
    int32_t FrameWidth;
    int32_t FrameHeight;
    int32_t FrameDepth;
} SparkGraphInfoStruct;

/* ------------------------------------------------------------------------ */
/* Control structures                                                        */
/* ------------------------------------------------------------------------ */

/* A control callback: the host's reason (SPARK_REASON_USER when the user
 * changed the value) and the info record by value. Returns the output pixels
 * when it re-rendered, else null. */
typedef unsigned long *(*SparkCallback)(int reason, SparkInfoStruct info);

#define SPARK_REASON_USER 1

#define SPARK_PUP_MAX_ENTRIES 20
#define SPARK_STRING_LENGTH 200

typedef struct SparkFloatStruct {
    float Value;
    float Min;
    float Max;
    float Increment;
    int32_t Flags;
    const char *Title;        /* printf format showing the value */
    SparkCallback Callback;
} SparkFloatStruct;

typedef struct SparkIntStruct {
    int32_t Value;
    int32_t Min;
    int32_t Max;
    int32_t Increment;
    int32_t Flags;
    const char *Title;
    SparkCallback Callback;
} SparkIntStruct;

typedef struct SparkBooleanStruct {
    uint8_t Value;            /* followed by padding to a word */
    const char *Title;
    SparkCallback Callback;
} SparkBooleanStruct;

typedef struct SparkPushStruct {
    const char *Title;
    SparkCallback Callback;
} SparkPushStruct;

typedef struct SparkPupStruct {
    int32_t Value;            /* 0-based entry */
    int32_t Count;            /* entries in use */
    SparkCallback Callback;
    const char *Titles[SPARK_PUP_MAX_ENTRIES];
} SparkPupStruct;

typedef struct SparkColorStruct {
    uint32_t Value;           /* red bits 0-7, green 8-15, blue 16-23 */
    SparkCallback Callback;
} SparkColorStruct;

typedef struct SparkStringStruct {
    char Value[SPARK_STRING_LENGTH];
    const char *Title;
    int32_t Flags;
    SparkCallback Callback;
} SparkStringStruct;

/* Exported structure names are the kind followed by the control number,
 * e.g. SparkFloat11, SparkPup23, SparkBoolean15, SparkPush6, SparkInt9,
 * SparkColor71, SparkString0. Numbers 6..121 are four pages of 29. */
#define SPARK_FIRST_PAGE_CONTROL 6
#define SPARK_CONTROLS_PER_PAGE 29
#define SPARK_PAGE_COUNT 4
#define SPARK_MAX_CONTROL 121

/* First argument of sparkEnableParameter/sparkDisableParameter. */
#define SPARK_UI_CONTROL 1
/* First argument of the curve functions: a control's own animation curve. */
#define SPARK_CURVE_CONTROL 1

/* Cursor shapes for sparkViewingCursor. */
#define SPARK_CURSOR_NORMAL 1
#define SPARK_CURSOR_CAUGHT 14
#define SPARK_CURSOR_HOVER 20

/* ------------------------------------------------------------------------ */
/* Entry points a plug-in exports (unmangled)                                */
/* ------------------------------------------------------------------------ */

unsigned int SparkInitialise(SparkInfoStruct info);
int SparkClips(void);
void SparkMemoryTempBuffers(void);
int SparkProcessStart(void);
unsigned long *SparkProcess(SparkInfoStruct info);
void SparkUnInitialise(SparkInfoStruct info);
void SparkOverlay(SparkInfoStruct info, float zoom);
unsigned long *SparkInteract(SparkInfoStruct info, int unused1, int unused2,
                             float pressure, float x, float y);
void SparkChannelEditor(void);

/* ------------------------------------------------------------------------ */
/* Host functions a plug-in may call                                         */
/* ------------------------------------------------------------------------ */

double sparkAPIVersionInfo(void);
void sparkError(const char *text);
void sparkMessage(const char *text);
int sparkMessageConfirm(const char *text);          /* 1 yes, 0 no */
void sparkLoadSetup(SparkInfoStruct *info);
void sparkSaveSetup(SparkInfoStruct *info);
int sparkMemGetFreeMemory(void);                    /* free image buffers */
int sparkMemGetBuffer(int id, SparkMemBufStruct *buffer);  /* non-zero on success */
int sparkGraphSetup(SparkGraphInfoStruct *graph);
float sparkGetViewerRatio(void);
void sparkControlTitle(int page, const char *title);
void sparkClipControlTitle(int clip, const char *title);
void sparkControlUpdate(int control);
void sparkEnableParameter(int kind, int control);
void sparkDisableParameter(int kind, int control);
float sparkGetCurveValuef(int kind, int control, float frame);
int sparkSetCurveKey(int kind, int control, float frame, float value);
void sparkCursorBusy(void);
void sparkViewingCursor(int shape);
void sparkViewingDraw(void);
void sparkCeAddFolder(int level, const char *name);
void sparkCeAddControl(int level, int flags, int control);
void sparkSetControlName(int control, const char *name);
void sparkWorkingDir(char *buffer);                 /* buffer of SPARK_SETUP_PATH_MAX bytes */
typedef void (*SparkFileBrowserCallback)(char *path);
void sparkFileBrowserDisplay(const char *directory, const char *extension,
                             SparkFileBrowserCallback callback);
int sparkGetFrame(int clip, int frame, void *buffer);  /* non-zero on success */

/* Processor fork: run worker on every processor with the same four
 * pointer-sized arguments; returns when all have finished. Inside a worker,
 * sparkMpInfo gives two integers whose quotient is the worker's index. */
typedef void (*SparkMpWorker)(void *a0, void *a1, void *a2, void *a3);
int sparkMpFork(SparkMpWorker worker, int argc, void *a0, void *a1, void *a2, void *a3);
void sparkMpInfo(unsigned int *position, unsigned int *stride);

#ifdef __cplusplus
} /* extern "C" */

static_assert(offsetof(SparkInfoStruct, ViewerOffsetX) == 4096, "info record layout");
static_assert(offsetof(SparkInfoStruct, ViewerOffsetY) == 4100, "info record layout");
static_assert(offsetof(SparkInfoStruct, ViewerState) == 4120, "info record layout");
static_assert(offsetof(SparkInfoStruct, FrameNo) == 4124, "info record layout");
static_assert(offsetof(SparkInfoStruct, TotalFrames) == 4128, "info record layout");
static_assert(offsetof(SparkInfoStruct, FrameWidth) == 4132, "info record layout");
static_assert(offsetof(SparkInfoStruct, FrameHeight) == 4136, "info record layout");
static_assert(offsetof(SparkInfoStruct, FrameDepth) == 4140, "info record layout");
static_assert(offsetof(SparkInfoStruct, NumProcessors) == 4148, "info record layout");
static_assert(sizeof(SparkInfoStruct) == 4200, "info record size");
static_assert(offsetof(SparkMemBufStruct, Buffer) == sizeof(void *), "pixel address is the second field");
static_assert(offsetof(SparkGraphInfoStruct, PixelAspectRatio) == 0, "aspect is the first field");
#endif

#endif /* SPARK_SPARK_H */

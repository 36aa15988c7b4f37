// The host's frame buffers as the entry points use them: fetching, checking
// and converting them to and from the effect's images.
#pragma once

#include "framework/image.h"
#include "spark/spark.h"

// The current frame's buffer as an image of the effect, at the proxy size;
// copy 0 makes an image of the right size without reading the pixels.
ImageQv *convert_in(const void *pixels, double aspect, int copy);
// Writes an image back into a buffer of the current frame.
void convert_out(const ImageQv *image, void *pixels);

// Asks the host for a frame buffer. A refusal is the host's to report; a
// buffer without pixels, or too small for the frame, is reported here.
bool get_buffer(int id, SparkMemBufStruct &buffer);

// Fetches an input clip's buffer and converts it into its source. False when
// there is no usable buffer for it. With convert false the source is left
// without an image: the effect does not read it this frame.
bool load_source(int index, int id, SparkMemBufStruct &buffer, double aspect, bool convert = true);

// Sets up the frame the host asks for (size, proxy divisor, processors, the
// framework's frame context and the effect's frame numbers), as a processed
// and a simulated frame both need it. Returns the pixel aspect.
double begin_frame(const SparkInfoStruct &info);

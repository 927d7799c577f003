#pragma once
// The element images of a render target. The lists themselves, trFImageList (float
// images, one per element, with exposure and output flags) and trBImageList (up to 16
// byte images for display, each with its filter), live with the image types; this
// header is the render side's view of them, plus the step from one to the other.

#include "images/trImage.h"

// Quantises float image i of `floats` into byte image i of `bytes`, through the byte
// list's filter i (null is identity), with a reproducible dither for `seed`. Only as
// many images as both lists hold are converted; a null image on either side is
// skipped. Returns the number of images converted.
long trSetBytePixelsFromFloatImageList(trBImageList const &bytes, trFImageList const &floats, long seed);

#pragma once

// Everything that the category adds to images, and to their bitmaps, by theme.

#include "images/ImageContents.h"
#include "images/ImageEncoding.h"
#include "images/ImageFileTypes.h"
#include "images/ImageFiles.h"
#include "images/ImageOverlays.h"
#include "images/ImagePathExtensions.h"
#include "images/ImageSizes.h"
#include "images/NamedImages.h"
#include "images/PDFRepresentations.h"
#include "images/ScaledDrawing.h"
#include "images/ScaledImages.h"

#pragma once

// Everything that the category adds to images, and to their bitmaps, by theme.

#include "images/ImageContents.h"
#include "images/ImageFileTypes.h"
#include "images/ImageFiles.h"
#include "images/ImagePathExtensions.h"
#include "images/ImageSizes.h"

#pragma once

// Everything that the category adds to movies, by theme.

#include "movies/MovieFileTypes.h"
#include "movies/MovieThumbnails.h"
#include "movies/MovieTimes.h"

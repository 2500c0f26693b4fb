#pragma once

// Everything that the category adds to mutable strings: the themes that change a string in place.

#include "text/StringEditing.h"
#include "text/StringNormalization.h"
#include "text/StringRemoval.h"
#include "text/StringReplacement.h"
#include "text/StringTrimming.h"

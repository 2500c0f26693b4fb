#pragma once

// Everything that the category adds to strings: searching and counting characters, needles and substrings.

#include "text/CharacterSearch.h"
#include "text/StringMatching.h"
#include "text/SubstringSearch.h"

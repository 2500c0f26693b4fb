#pragma once

// Everything that the path category adds to strings, and the standard folders.

#include "text/Base64Text.h"
#include "text/FileNames.h"
#include "text/PathStrings.h"
#include "text/StandardDirectories.h"

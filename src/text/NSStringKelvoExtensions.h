#pragma once

// Everything that the category adds to strings, by theme. The mutable strings' members stand beside their
// copying forms, and searching is a category of its own (NSStringTextFinding.h).

#include "text/CharacterSetReps.h"
#include "text/ConfigurationText.h"
#include "text/FoldingTables.h"
#include "text/LinksAndNumbers.h"
#include "text/StringComparison.h"
#include "text/StringEditing.h"
#include "text/StringEncodingSetting.h"
#include "text/StringFiles.h"
#include "text/StringFolding.h"
#include "text/StringLines.h"
#include "text/StringNormalization.h"
#include "text/StringRemoval.h"
#include "text/StringReplacement.h"
#include "text/StringTrimming.h"
#include "text/UnicharCompare.h"
#include "text/WordsAndLines.h"

#include "importers/subtitles/SubtitlesImport.h"

KELVO_IMPORTER(kelvo::importers::importSubtitles)

#include "importers/archives/ArchiveImport.h"

KELVO_IMPORTER(kelvo::importers::importArchive)

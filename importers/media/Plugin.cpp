#include "importers/media/MediaImport.h"

KELVO_IMPORTER(kelvo::importers::importMedia)

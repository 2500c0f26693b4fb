#include "importers/fonts/FontImport.h"

KELVO_IMPORTER(kelvo::importers::importFont)

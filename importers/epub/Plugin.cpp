#include "importers/epub/BookImport.h"

KELVO_IMPORTER(kelvo::importers::importBook)

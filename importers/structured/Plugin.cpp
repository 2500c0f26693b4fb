#include "importers/structured/StructuredImport.h"

KELVO_IMPORTER(kelvo::importers::importStructured)

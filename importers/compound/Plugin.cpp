#include "importers/compound/CompoundImport.h"

KELVO_IMPORTER(kelvo::importers::importCompound)

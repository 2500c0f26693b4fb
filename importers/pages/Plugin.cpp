#include "importers/pages/PageImport.h"

KELVO_IMPORTER(kelvo::importers::importPage)

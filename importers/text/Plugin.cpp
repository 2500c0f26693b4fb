#include "importers/text/TextImport.h"

KELVO_IMPORTER(kelvo::importers::importText)

#include "importers/images/ImageImport.h"

KELVO_IMPORTER(kelvo::importers::importImage)

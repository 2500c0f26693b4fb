#include "importers/office/OfficeImport.h"

KELVO_IMPORTER(kelvo::importers::importOffice)

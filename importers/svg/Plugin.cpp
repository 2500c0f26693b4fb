#include "importers/svg/SVGImport.h"

KELVO_IMPORTER(kelvo::importers::importSVG)

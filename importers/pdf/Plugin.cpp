#include "importers/pdf/PDFImport.h"

KELVO_IMPORTER(kelvo::importers::importPDF)

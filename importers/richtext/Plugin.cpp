#include "importers/richtext/RichTextImport.h"

KELVO_IMPORTER(kelvo::importers::importRichText)

#include "importers/calendar/CalendarImport.h"

KELVO_IMPORTER(kelvo::importers::importCalendar)

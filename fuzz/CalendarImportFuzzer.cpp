#include "ImportedFile.h"
#include "importers/calendar/CalendarImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    kelvo::importFuzzed(kelvo::importers::importCalendar, bytes, size, "com.apple.ical.ics");
    return 0;
}

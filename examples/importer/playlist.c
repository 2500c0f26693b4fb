/*
 * A metadata importer for playlists (M3U): their title, performers, length, date and the titles of their entries.
 *
 *     #EXTM3U
 *     #PLAYLIST:Songs of the quay
 *     #EXT-X-PROGRAM-DATE-TIME:2024-06-01T18:30:00Z
 *     #EXTINF:215,Ada Lindqvist - Low water
 *     songs/low-water.mp3
 */
#include <plumwick/mdimporter.h>

#include <stdlib.h>
#include <string.h>

#define MOST_PERFORMERS 100

typedef struct Span {
    const char* bytes;
    size_t length;
} Span;

/* Whether the service that is running knows the function: later ones have more of them. */
#define KNOWS(functions, name)                                                                               \
    ((functions)->size >= offsetof(MDAttributesFunctions, name) + sizeof((functions)->name))

static void note(MDAttributes* attributes, int kind, const char* sentence) {
    if (KNOWS(attributes->functions, note))
        attributes->functions->note(attributes, kind, sentence);
}

static void skip(Span* text, size_t count) {
    text->bytes += count;
    text->length -= count;
}

/* Takes the mark from the beginning of the text, if that is where it is. */
static int takeMark(Span* text, const char* mark) {
    const size_t length = strlen(mark);
    if (text->length < length || memcmp(text->bytes, mark, length) != 0)
        return 0;
    skip(text, length);
    return 1;
}

static Span trimmed(Span text) {
    while (text.length > 0 && (unsigned char)text.bytes[0] <= ' ')
        skip(&text, 1);
    while (text.length > 0 && (unsigned char)text.bytes[text.length - 1] <= ' ')
        --text.length;
    return text;
}

static Span takeLine(Span* text) {
    const char* const end = memchr(text->bytes, '\n', text->length);
    Span line = *text;
    if (end)
        line.length = (size_t)(end - text->bytes);
    skip(text, line.length + (end ? 1 : 0));
    return trimmed(line);
}

/* The number of so many digits, and the character behind it; -1 when that is not there. */
static int takeDigits(Span* text, size_t count, char behind) {
    int number = 0;
    size_t index;
    if (text->length < count)
        return -1;
    for (index = 0; index < count; ++index) {
        if (text->bytes[index] < '0' || text->bytes[index] > '9')
            return -1;
        number = number * 10 + (text->bytes[index] - '0');
    }
    skip(text, count);
    if (behind && !(text->length > 0 && text->bytes[0] == behind))
        return -1;
    skip(text, behind ? 1 : 0);
    return number;
}

/* Whole seconds of "2024-06-01T18:30:00Z"; only times in UTC are taken. */
static int readDate(Span text, double* secondsSince1970) {
    const int year = takeDigits(&text, 4, '-');
    const int month = year < 0 ? -1 : takeDigits(&text, 2, '-');
    const int day = month < 0 ? -1 : takeDigits(&text, 2, 'T');
    const int hour = day < 0 ? -1 : takeDigits(&text, 2, ':');
    const int minute = hour < 0 ? -1 : takeDigits(&text, 2, ':');
    const int second = minute < 0 ? -1 : takeDigits(&text, 2, 0);
    long years, days;
    if (second < 0 || year < 1 || month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 ||
        minute > 59 || second > 60 || text.length == 0 || text.bytes[text.length - 1] != 'Z')
        return 0;
    /* Years that begin in March have their leap day at the end. */
    years = year - (month <= 2 ? 1 : 0);
    days = 365 * years + years / 4 - years / 100 + years / 400 + (153 * ((month + 9) % 12) + 2) / 5 + day - 1;
    *secondsSince1970 = (double)(days - 719468) * 86400 + hour * 3600 + minute * 60 + second;
    return 1;
}

/* What has been found so far. The spans lie in the file. */
typedef struct Playlist {
    Span title;
    double seconds;
    double date;
    int hasDate;
    int64_t entryCount;
    MDValue performers[MOST_PERFORMERS];
    size_t performerCount;
    int hasMorePerformers;
    char* text;
    size_t textLength;
} Playlist;

static void addPerformer(Playlist* list, Span name) {
    MDValue* value = list->performers;
    for (; value < list->performers + list->performerCount; ++value) {
        if (value->as.span.length == name.length &&
            memcmp(value->as.span.bytes, name.bytes, name.length) == 0)
            return;
    }
    if (list->performerCount == MOST_PERFORMERS) {
        list->hasMorePerformers = 1;
        return;
    }
    memset(value, 0, sizeof *value);
    value->type = MDValueString;
    value->as.span.bytes = name.bytes;
    value->as.span.length = name.length;
    ++list->performerCount;
}

static void addLineOfText(Playlist* list, Span line) {
    if (list->textLength > 0)
        list->text[list->textLength++] = '\n';
    memcpy(list->text + list->textLength, line.bytes, line.length);
    list->textLength += line.length;
}

/* "215,Ada Lindqvist - Low water"; a length of -1 is not known. */
static void readEntry(Playlist* list, Span facts) {
    double seconds = 0;
    size_t index;
    const char* const comma = facts.length > 0 ? memchr(facts.bytes, ',', facts.length) : NULL;
    Span title;
    if (!comma)
        return;
    while (facts.bytes[0] >= '0' && facts.bytes[0] <= '9') {
        seconds = seconds * 10 + (facts.bytes[0] - '0');
        skip(&facts, 1);
    }
    if (seconds < 1e9)
        list->seconds += seconds;
    skip(&facts, (size_t)(comma - facts.bytes) + 1);
    title = trimmed(facts);
    if (title.length == 0)
        return;
    addLineOfText(list, title);
    for (index = 1; index + 3 < title.length; ++index) {
        if (memcmp(title.bytes + index, " - ", 3) == 0) {
            title.length = index;
            addPerformer(list, trimmed(title));
            break;
        }
    }
}

static void readPlaylist(Playlist* list, Span file) {
    takeMark(&file, "\xEF\xBB\xBF");
    while (file.length > 0) {
        Span line = takeLine(&file);
        if (takeMark(&line, "#PLAYLIST:"))
            list->title = trimmed(line);
        else if (takeMark(&line, "#EXTINF:"))
            readEntry(list, line);
        else if (takeMark(&line, "#EXT-X-PROGRAM-DATE-TIME:"))
            list->hasDate = list->hasDate || readDate(trimmed(line), &list->date);
        else if (line.length > 0 && line.bytes[0] != '#')
            ++list->entryCount;
    }
}

static unsigned char importPlaylist(void* self, MDAttributes* attributes, const char* contentType,
                                    const char* path) {
    const MDAttributesFunctions* const functions = attributes->functions;
    Playlist list;
    Span file = {NULL, 0};
    (void)self;
    (void)contentType;
    (void)path;
    file.bytes = functions->fileBytes(attributes, &file.length);
    if (!file.bytes || file.length == 0)
        return 0;
    if (memchr(file.bytes, '\0', file.length)) {
        note(attributes, MDNoteBroken, "a playlist is text, and this is none");
        return 0;
    }
    memset(&list, 0, sizeof list);
    /* Each line of the text is part of a longer line of the file. */
    list.text = malloc(file.length);
    if (!list.text)
        return 0;
    readPlaylist(&list, file);

    if (list.title.length > 0)
        functions->setString(attributes, "kMDItemTitle", list.title.bytes, list.title.length);
    if (list.performerCount > 0)
        functions->setArray(attributes, "kMDItemPerformers", list.performers, list.performerCount);
    if (list.seconds > 0)
        functions->setReal(attributes, "kMDItemDurationSeconds", list.seconds);
    if (list.hasDate)
        functions->setDate(attributes, "kMDItemRecordingDate", list.date);
    /* What has no name yet gets one that begins like a domain of one's own. */
    functions->setInteger(attributes, "org_example_entries", list.entryCount);
    functions->setString(attributes, "kMDItemTextContent", list.text, list.textLength);
    if (list.hasMorePerformers)
        note(attributes, MDNoteIncomplete, "only the first 100 performers are listed");
    free(list.text);
    return 1;
}

/* The object: a table of functions first, and whatever an importer keeps from file to file behind it. */
typedef struct Importer {
    const MDImporterInterface* functions;
    uint32_t references;
} Importer;

static uint32_t addReference(void* self) {
    return ++((Importer*)self)->references;
}

static uint32_t release(void* self) {
    const uint32_t left = --((Importer*)self)->references;
    if (left == 0)
        free(self);
    return left;
}

static int32_t queryInterface(void* self, MDUUID interfaceID, void** object) {
    const MDUUID known = MDImporterInterfaceID();
    *object = NULL;
    if (memcmp(&interfaceID, &known, sizeof known) != 0)
        return MD_E_NOINTERFACE;
    addReference(self);
    *object = self;
    return MD_S_OK;
}

static const MDImporterInterface interfaceOfPlaylists = {NULL, queryInterface, addReference, release,
                                                         importPlaylist};

/* The factory, by its name in Info.plist. */
__attribute__((visibility("default"))) void* NewPlaylistImporter(void* allocator, const MDUUID* typeID);

void* NewPlaylistImporter(void* allocator, const MDUUID* typeID) {
    const MDUUID known = MDImporterTypeID();
    Importer* importer;
    (void)allocator;
    if (memcmp(typeID, &known, sizeof known) != 0)
        return NULL;
    importer = malloc(sizeof *importer);
    if (importer) {
        importer->functions = &interfaceOfPlaylists;
        importer->references = 1;
    }
    return importer;
}

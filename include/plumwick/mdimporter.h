/*
 * The interface of metadata importers, for C and C++.
 *
 * A metadata importer is a bundle that the conversion service finds in one of the importer folders:
 *
 *     Name.mdimporter/Contents/Info.plist
 *     Name.mdimporter/Contents/Linux/Name.so        (for the "CFBundleExecutable" Name)
 *
 * Info.plist says which types of files it is for ("CFBundleDocumentTypes": dictionaries with "CFBundleTypeRole"
 * "MDImporter" and an array "LSItemContentTypes" of uniform type identifiers), which factories serve importers
 * ("CFPlugInTypes": from MDImporterTypeID, in text, to an array of identifiers of factories), and by which function of
 * the library a factory makes its objects ("CFPlugInFactories": from the factory's identifier to the function's name).
 * The library needs nothing of this project but this header.
 *
 * The library is loaded into a process of its own, once, and serves many files after each other on one thread. It may
 * read files, but neither write nor connect to anything nor start a process; what it attempts of that fails, or ends the
 * process. A file has 12 seconds. Whatever becomes of that process, what was set of the file until then is kept, and the
 * next file is served.
 *
 * Texts are UTF-8 throughout, and may hold NUL where a length goes with them; what is not UTF-8 becomes U+FFFD.
 */
#ifndef PLUMWICK_MDIMPORTER_H
#define PLUMWICK_MDIMPORTER_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A universally unique identifier, in the order in which its text is read. Passed by value. */
typedef struct MDUUID {
    uint8_t bytes[16];
} MDUUID;

/* The type of plug-in: 8B08C4BF-415B-11D8-B3F9-0003936726FC. */
static inline MDUUID MDImporterTypeID(void) {
    const MDUUID type = {
        {0x8B, 0x08, 0xC4, 0xBF, 0x41, 0x5B, 0x11, 0xD8, 0xB3, 0xF9, 0x00, 0x03, 0x93, 0x67, 0x26, 0xFC}};
    return type;
}

/* The interface that an importer is asked for: 6EBC27C4-899C-11D8-84AE-0003936726FC. */
static inline MDUUID MDImporterInterfaceID(void) {
    const MDUUID interface = {
        {0x6E, 0xBC, 0x27, 0xC4, 0x89, 0x9C, 0x11, 0xD8, 0x84, 0xAE, 0x00, 0x03, 0x93, 0x67, 0x26, 0xFC}};
    return interface;
}

/* What QueryInterface answers. */
#define MD_S_OK ((int32_t)0)
#define MD_E_NOINTERFACE ((int32_t)-0x7FFFFFFC) /* 0x80000004 */

typedef struct MDAttributes MDAttributes;

/* The functions of an importer. The object that a factory returns begins with a pointer to such a table. */
typedef struct MDImporterInterface {
    void* reserved; /* NULL */
    /* Puts the object that has the interface, with a reference for the caller, into *object and answers MD_S_OK; or NULL
     * and MD_E_NOINTERFACE. */
    int32_t (*QueryInterface)(void* self, MDUUID interfaceID, void** object);
    /* Both answer the number of references that are left. The last Release destroys the object. */
    uint32_t (*AddRef)(void* self);
    uint32_t (*Release)(void* self);
    /* Sets what it finds in the file. `contentType` is in lower case; `path` in the file system's bytes. Both, and the
     * attributes, are valid during the call only. Answers whether it found anything, which decides nothing. */
    unsigned char (*ImporterImportData)(void* self, MDAttributes* attributes, const char* contentType,
                                        const char* path);
} MDImporterInterface;

/* A factory: answers a new object with one reference, or NULL when it makes none of this type. The first argument is
 * NULL. */
typedef void* MDImporterFactory(void* allocator, const MDUUID* typeID);

/* One value in an array. */
enum {
    MDValueString = 1, /* as.span, UTF-8 */
    MDValueInteger,    /* as.integer */
    MDValueReal,       /* as.real */
    MDValueBoolean,    /* as.integer, 0 or 1 */
    MDValueDate,       /* as.real, seconds since 1970 in UTC */
    MDValueData        /* as.span */
};

typedef struct MDValue {
    uint32_t type;
    uint32_t reserved; /* 0 */
    union {
        int64_t integer;
        double real;
        struct {
            const void* bytes;
            size_t length; /* in bytes */
        } span;
    } as;
} MDValue;

/* What there is to say of a file beside its attributes. */
enum {
    MDNoteIncomplete = 0,  /* something is missing from the attributes */
    MDNoteUnsupported = 2, /* it is a kind of file that cannot be read */
    MDNoteBroken = 3,      /* it is damaged, or not what it says it is */
    MDNoteLocked = 4       /* it is encrypted */
};

/* The longest name of an attribute, in bytes; how many attributes a file has, values an array, and bytes all of it. */
#define MD_LONGEST_NAME 255
#define MD_MOST_ATTRIBUTES 1024
#define MD_MOST_VALUES 65536
#define MD_MOST_BYTES (96u << 20)
/* How many questions an importer may have about a file. */
#define MD_MOST_QUESTIONS 16

/*
 * What may be done with the attributes of a file that is being imported. Later versions have more functions at the end:
 * one of them is there when `size` reaches past it.
 *
 * Names are NUL-terminated. The functions that set answer 1; or 0 when they have not, because the name is none, a value
 * is none, or it would be too much. A name that is set again has its last value.
 */
typedef struct MDAttributesFunctions {
    size_t size; /* of this table, in bytes */
    int (*setString)(MDAttributes* attributes, const char* name, const char* text, size_t lengthInBytes);
    int (*setInteger)(MDAttributes* attributes, const char* name, int64_t value);
    int (*setReal)(MDAttributes* attributes, const char* name, double value);
    int (*setBoolean)(MDAttributes* attributes, const char* name, int value);
    int (*setDate)(MDAttributes* attributes, const char* name, double secondsSince1970);
    int (*setData)(MDAttributes* attributes, const char* name, const void* bytes, size_t length);
    /* The attribute is known to have no value. */
    int (*setNull)(MDAttributes* attributes, const char* name);
    int (*setArray)(MDAttributes* attributes, const char* name, const MDValue* values, size_t count);

    /* The open file, to be read with pread, not to be closed; -1 for a folder, and what could not be opened. */
    int (*fileDescriptor)(MDAttributes* attributes);
    /* The bytes of the file and how many there are, valid during the import; NULL when there are none. They are mapped,
     * not read: a file of any size costs what of it is looked at. */
    const void* (*fileBytes)(MDAttributes* attributes, size_t* length);

    /* Tells why there may be nothing set, or what is missing, in a sentence without the file's name and without a full
     * stop: "the document is encrypted". `kind` is one of the notes above. */
    void (*note)(MDAttributes* attributes, int kind, const char* sentence);
    /* Ends the import; what was set is kept. Does not return: a C++ exception leaves ImporterImportData, which has to let
     * it through (C code that holds something compiles with -fexceptions and cleans up by itself). */
    void (*raise)(MDAttributes* attributes, const char* name, const char* reason);

    /* What follows is asked of the service, at most MD_MOST_QUESTIONS times a file. Both answer bytes that are valid
     * during the import, and how many there are, or NULL. */

    /* A regular file right within the folder that is imported, by its name. */
    const void* (*packageFileBytes)(MDAttributes* attributes, const char* name, size_t* length);
    /* The file as the office suite reads it, as one file of OpenDocument XML, which takes it up to seconds. NULL when it is
     * no office document by its type, the suite is not installed or cannot read it, which is noted. */
    const void* (*officeDocumentBytes)(MDAttributes* attributes, size_t* length);
} MDAttributesFunctions;

struct MDAttributes {
    const MDAttributesFunctions* functions;
};

#ifdef __cplusplus
}
#endif

#endif

#pragma once

namespace kelvo::importerengine {

// What the plug-ins' stand-in and plumwick-importer-engine say to each other.

inline constexpr const char* programName = "plumwick-importer-engine";

// Arguments of the program, before the path that each is about: a folder with plug-ins and all that they may read, and,
// without one, plug-ins that may read any file.
inline constexpr const char* onlyArgument = "--only";

// A message is a dictionary.
/// A string: which of these it is.
inline constexpr const char16_t* actionKey = u"Action";
/// Makes an object and asks it for an interface. Answered with an array of its number and that of the object that has the
/// interface, which is missing when there is none; nil when none was made.
inline constexpr const char16_t* createAction = u"Create";
/// Imports a file. Answered true or false; or with a dictionary that says what was thrown.
inline constexpr const char16_t* importAction = u"Import";

/// Of both: a string, by which sentences name the plug-in.
inline constexpr const char16_t* titleKey = u"Title";
/// Of createAction: strings, and the 16 bytes of the type.
inline constexpr const char16_t* libraryKey = u"Library";
inline constexpr const char16_t* functionKey = u"Function";
inline constexpr const char16_t* typeKey = u"Type";
/// Of importAction: a number.
inline constexpr const char16_t* objectKey = u"Object";
/// Of both: a number, the object that is given up before; its number is not used again.
inline constexpr const char16_t* releasedKey = u"Released";
/// Of createAction: its 16 bytes.
inline constexpr const char16_t* interfaceKey = u"Interface";
/// Of importAction: strings; and data, absent when there is no regular file that can be read.
inline constexpr const char16_t* contentTypeKey = u"ContentType";
inline constexpr const char16_t* pathKey = u"Path";
inline constexpr const char16_t* fileKey = u"File";

// What was thrown: strings. Without a name it was no NSException.
inline constexpr const char16_t* exceptionNameKey = u"Name";
inline constexpr const char16_t* reasonKey = u"Reason";

// While a file is imported each attribute is reported as it is set: an array of its name and its value; of the name
// alone when that is null.

// While a file is imported the engine may ask a question: a dictionary. Answered with data, or nil.
/// A string: which of these it is.
inline constexpr const char16_t* questionKey = u"Question";
/// The file of that name right within the folder that is imported.
inline constexpr const char16_t* packageFileQuestion = u"PackageFile";
/// The file as the office suite reads it, as OpenDocument XML.
inline constexpr const char16_t* officeDocumentQuestion = u"OfficeDocument";
/// Of packageFileQuestion: a string.
inline constexpr const char16_t* nameKey = u"FileName";

} // namespace kelvo::importerengine

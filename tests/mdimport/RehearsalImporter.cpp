// A plug-in whose files say what it does with them: a command, a blank, and what that is about.
#include <plumwick/mdimporter.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace {

struct Object {
    const MDImporterInterface* functions;
    bool hasInterface;
};

std::int32_t query(void* self, MDUUID interface, void** result) {
    const bool isImporter = std::memcmp(interface.bytes, MDImporterInterfaceID().bytes, 16) == 0;
    *result = isImporter && static_cast<Object*>(self)->hasInterface ? self : nullptr;
    return *result ? MD_S_OK : MD_E_NOINTERFACE;
}

std::uint32_t addReference(void*) {
    return 1;
}

int timesReleased = 0;

std::uint32_t release(void*) {
    ++timesReleased;
    return 1;
}

MDValue valueOf(std::uint32_t type, const char* text) {
    MDValue value{type, 0, {}};
    value.as.span = {text, std::strlen(text)};
    return value;
}

void setEachKind(MDAttributes* to, const MDAttributesFunctions& can) {
    can.setString(to, "string", "a\0\xC3\xA4\xFF", 5);
    can.setInteger(to, "integer", INT64_MIN);
    can.setReal(to, "real", 0.5);
    can.setBoolean(to, "boolean", 7);
    can.setDate(to, "date", -1.5);
    can.setData(to, "data", "\0\1", 2);
    can.setNull(to, "null");
    MDValue values[] = {valueOf(MDValueString, "one"), valueOf(MDValueData, "two"), {MDValueInteger, 0, {3}}};
    can.setArray(to, "array", values, 3);
    can.setArray(to, "empty", nullptr, 0);
}

/// What is not to be set, as the sum of what the functions answer.
int setWhatIsNone(MDAttributes* to, const MDAttributesFunctions& can) {
    MDValue values[] = {{99, 0, {1}}};
    const std::string text(MD_MOST_BYTES + 1, 'x');
    int set = can.setString(to, "", "x", 1) + can.setString(to, nullptr, "x", 1) +
              can.setString(to, std::string(256, 'n').c_str(), "x", 1) +
              can.setString(to, "none", nullptr, 1) + can.setDate(to, "none", 1.0 / 0.0) +
              can.setArray(to, "none", values, 1) + can.setArray(to, "none", values, std::size_t(-1)) +
              can.setString(to, "none", text.c_str(), text.size());
    for (int number = 0; number < 2 * MD_MOST_ATTRIBUTES; ++number)
        set += can.setInteger(to, std::to_string(number).c_str(), number);
    return set;
}

int errorOfConnecting(const char* path) {
    const int unixSocket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    if (unixSocket < 0 || ::connect(unixSocket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        return errno;
    return 0;
}

void askFor(const std::string& name, MDAttributes* to) {
    const MDAttributesFunctions& can = *to->functions;
    std::size_t length = 0;
    const void* const bytes = name.starts_with("office") ? can.officeDocumentBytes(to, &length)
                                                         : can.packageFileBytes(to, name.c_str(), &length);
    if (bytes)
        can.setString(to, "answer", static_cast<const char*>(bytes), length);
}

/// How many questions are answered.
int askOften(MDAttributes* to) {
    int answers = 0;
    std::size_t length = 0;
    while (to->functions->officeDocumentBytes(to, &length))
        ++answers;
    return answers;
}

void doAs(const std::string& command, const std::string& about, MDAttributes* to) {
    const MDAttributesFunctions& can = *to->functions;
    const auto tell = [&](bool hasWorked) { can.setInteger(to, "error", hasWorked ? 0 : errno); };
    if (command == "kinds")
        setEachKind(to, can);
    else if (command == "none")
        can.setInteger(to, "set", setWhatIsNone(to, can));
    else if (command == "raise")
        can.raise(to, "Name", about.c_str());
    else if (command == "throw")
        throw std::runtime_error(about);
    else if (command == "throw7")
        throw 7;
    else if (command == "abort")
        std::abort();
    else if (command == "hang")
        for (;;)
            ::pause();
    else if (command == "grow")
        for (std::vector<char*> all;;)
            all.push_back(static_cast<char*>(std::memset(std::malloc(1 << 26), 1, 1 << 26)));
    else if (command == "note")
        can.note(to, MDNoteLocked, about.c_str());
    else if (command == "read")
        tell(::open(about.c_str(), O_RDONLY | O_CLOEXEC) >= 0);
    else if (command == "write")
        tell(::open(about.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600) >= 0);
    else if (command == "fork")
        tell(::fork() >= 0);
    else if (command == "execute")
        tell(::execl("/bin/true", "true", nullptr) == 0);
    else if (command == "connect")
        can.setInteger(to, "error", errorOfConnecting(about.c_str()));
    else if (command == "ask")
        askFor(about, to);
    else if (command == "ask-often")
        can.setInteger(to, "answers", askOften(to));
    else if (command == "released")
        can.setInteger(to, "released", timesReleased);
    else
        can.setInteger(to, "process", ::getpid());
}

unsigned char import(void*, MDAttributes* to, const char* contentType, const char* path) {
    const MDAttributesFunctions& can = *to->functions;
    std::size_t length = 0;
    const auto* bytes = static_cast<const char*>(can.fileBytes(to, &length));
    if (!bytes)
        bytes = static_cast<const char*>(can.packageFileBytes(to, "command", &length));
    const std::string text(bytes, length);
    const std::size_t blank = std::min(text.find(' '), text.size());
    can.setString(to, "kMDItemTitle", "begun", 5);
    can.setString(to, "kMDItemTitle", contentType, std::strlen(contentType));
    can.setString(to, "path", path, std::strlen(path));
    char first = 0;
    can.setBoolean(to, "descriptor", ::pread(can.fileDescriptor(to), &first, 1, 0) == 1 && first == text[0]);
    doAs(text.substr(0, blank), text.substr(std::min(blank + 1, text.size())), to);
    return 0;
}

constexpr MDImporterInterface functions{nullptr, query, addReference, release, import};
Object importer{&functions, true};
Object other{&functions, false};

} // namespace

#define FACTORY(name) extern "C" [[gnu::visibility("default")]] void* name(void*, const MDUUID* type)

FACTORY(makeNone) {
    return type ? nullptr : &other;
}
FACTORY(makeThrow) {
    throw std::runtime_error(type ? "it is out of order" : "");
}
FACTORY(makeAbort) {
    return type ? std::abort(), nullptr : nullptr;
}
FACTORY(makeOther) {
    return type ? &other : nullptr;
}
FACTORY(make) {
    return std::memcmp(type->bytes, MDImporterTypeID().bytes, 16) == 0 ? &importer : nullptr;
}

#include "platform/engine/EngineExceptions.h"
#include "platform/engine/program/Confinement.h"
#include "platform/engine/program/EngineChannel.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/processes/ProcessFacts.h"
#include "platform/webkit/engine/DisplayServer.h"
#include "platform/webkit/engine/PageReader.h"

#include <glib-unix.h>
#include <gtk/gtk.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo {
namespace {

constexpr int millisecondsForDisplay = 5000;

/// Whether this system lets the web processes be shut in: containers often do not.
class SandboxProbe {
public:
    SandboxProbe() : process_(fork()) {
        if (process_ != 0)
            return;
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, STDOUT_FILENO);
        dup2(nothing, STDERR_FILENO);
        execlp("bwrap", "bwrap", "--ro-bind", "/", "/", "--unshare-all", "--proc", "/proc", "--dev", "/dev",
               "--die-with-parent", "true", nullptr);
        _exit(127);
    }
    bool result() {
        int status = -1;
        while (process_ > 0 && waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        }
        return process_ > 0 && access("/usr/bin/xdg-dbus-proxy", X_OK) == 0 && WIFEXITED(status) &&
               WEXITSTATUS(status) == 0;
    }

private:
    pid_t process_;
};

/// What the libraries and the web processes find worth a warning is nobody's news.
void silenceLibraries() {
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    close(nothing);
}

/// What they end this process for is.
GLogWriterOutput logFatal(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
    if (level & (G_LOG_LEVEL_ERROR | G_LOG_FLAG_FATAL)) {
        char* message = g_log_writer_format_fields(level, fields, count, FALSE);
        NSLog(u"The web engine ends: %@", NSString::stringByRepairingUTF8String(message));
        g_free(message);
    }
    return G_LOG_WRITER_HANDLED;
}

/// What GTK, GLib and WebKit look for: the private display, settings and data in the own folder only, no
/// services of a desktop. What a page is read with is the same everywhere. All else the environment has not
/// been given.
void prepareEnvironment(const std::string& folder, const std::string& runtimeFolder) {
    const std::string home = folder + "/home";
    mkdir(home.c_str(), 0700);
    // Has to be there when WebKit is told what its sandboxes may see.
    mkdir(runtimeFolder.c_str(), 0700);
    const char* const set[][2] = {{"HOME", home.c_str()},
                                  {"XDG_RUNTIME_DIR", runtimeFolder.c_str()},
                                  {"XDG_CONFIG_HOME", home.c_str()},
                                  {"XDG_DATA_HOME", home.c_str()},
                                  {"XDG_CACHE_HOME", home.c_str()},
                                  // None is found, nor started.
                                  {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
                                  {"GDK_BACKEND", "x11"},
                                  {"NO_AT_BRIDGE", "1"},
                                  {"GTK_A11Y", "none"},
                                  {"GSETTINGS_BACKEND", "memory"},
                                  {"GIO_USE_VFS", "local"},
                                  {"GTK_THEME", "Adwaita"},
                                  {"WEBKIT_DISABLE_COMPOSITING_MODE", "1"},
                                  {"WEBKIT_DISABLE_DMABUF_RENDERER", "1"}};
    for (const auto& [name, value] : set)
        setenv(name, value, 1);
}

bool useDisplay(DisplayServer& server) {
    const std::string display = server.waitForDisplay(millisecondsForDisplay);
    setenv("DISPLAY", display.c_str(), 1);
    setenv("XAUTHORITY", server.authorityPath().c_str(), 1);
    return !display.empty();
}

NSString textOf(const std::string& bytes) {
    return NSString::stringByRepairingUTF8String(bytes);
}

std::string bytesOf(const NSString& text) {
    return text.isNil() ? std::string() : text.UTF8String();
}

Value answerTo(const Value& message, PageReader& reader, EngineChannel& channel) {
    const NSDictionary fields = message.dictionary();
    const NSData page = fields.objectForKey(u"page").data();
    const NSNumber* deadline = fields.objectForKey(u"deadline").numberIfAny();
    const NSNumber* asks = fields.objectForKey(u"asks").numberIfAny();
    PageRequest request;
    request.bytes.assign(reinterpret_cast<const char*>(page.bytes().data()), page.length());
    request.charset = bytesOf(fields.objectForKey(u"charset").string());
    request.files = PageFiles(NSURL::URLWithString(fields.objectForKey(u"base").string()));
    request.deadlineSeconds = deadline ? deadline->doubleValue() : 0;
    request.decide = [&channel, isAsking = asks && asks->boolValue()](const GateQuestion& question) {
        if (!isAsking)
            return question.url;
        auto asked = NSMutableDictionary::dictionary();
        asked.setObject_forKey(textOf(question.url), u"url");
        if (!question.redirectedFrom.empty()) {
            asked.setObject_forKey(textOf(question.redirectedFrom), u"redirectedFrom");
            asked.setObject_forKey(NSNumber::numberWithInt(question.statusCode), u"statusCode");
        }
        const auto reply = channel.ask(asked);
        // What is not decided yet is held where it would connect.
        return !reply ? std::string() : reply->numberIfAny() ? question.url : bytesOf(reply->string());
    };
    request.decideConnection = [&channel](const std::string& host, std::uint16_t port) {
        auto asked = NSMutableDictionary::dictionary();
        asked.setObject_forKey(textOf(host), u"host");
        asked.setObject_forKey(NSNumber::numberWithInt(port), u"port");
        const auto reply = channel.ask(asked);
        ConnectionDecision decision;
        if (reply && reply->numberIfAny())
            decision.state = ConnectionDecision::State::pending;
        if (const NSArray addresses = reply ? reply->array() : NSArray(); addresses.count() > 0) {
            decision.state = ConnectionDecision::State::allowed;
            for (const Value& address : addresses)
                decision.addresses.push_back(bytesOf(address.string()));
        }
        return decision;
    };
    request.noteRefusal = [&channel](const std::string& url) {
        auto told = NSMutableDictionary::dictionary();
        told.setObject_forKey(textOf(url), u"refused");
        channel.ask(told);
    };
    request.note = [&channel](Outcome outcome, const char16_t* sentence) { channel.note(outcome, sentence); };
    const auto description = reader.read(request);
    auto answer = NSMutableDictionary::dictionary();
    if (!description)
        return answer;
    answer.setObject_forKey(NSData::dataWithBytes(description->fields.data(), description->fields.size()),
                            u"fields");
    auto resources = NSMutableArray::array();
    for (const PageResource& resource : description->resources)
        resources.addObject(NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{textOf(resource.url), u"url"},
             {textOf(resource.mimeType), u"mimeType"},
             {NSData::dataWithBytes(resource.bytes.data(), resource.bytes.size()), u"data"}}));
    answer.setObject_forKey(resources, u"resources");
    return answer;
}

int failToStart(EngineChannel& channel, const NSString& reason) {
    channel.note(Outcome::missingEngine, reason);
    return engineStatusMissing;
}

/// Where bubblewrap may not shut in the web processes: a page that takes one over can read what the user can, and use
/// the network, but it can change nothing outside the engine's folder. WebKit starts processes
/// and talks to them over sockets, so that no filter of system calls fits it.
ConfinementLayers confineWithoutSandbox(const std::string& folder) {
    ConfinementProfile profile;
    profile.readable = {"/"};
    profile.writable = {folder, "/dev/shm"};
    profile.mayStartPrograms = true;
    profile.mayServeUnixSockets = true;
    profile.keepsNetwork = true;
    profile.landlockIsOfFilesAlone = true;
    profile.largestFileBytes = std::uint64_t{4} << 30;
    ConfinementSwitches switches;
    switches.systemCalls = false;
    return confine(profile, switches);
}

int run(const std::string& folder) {
    EngineChannel channel;
    if (folder.empty())
        return failToStart(channel, u"there is no temporary folder for the web engine");
    const std::string runtimeFolder = folder + "/run";
    // Web processes will not start without a display either. They draw nothing, and get one where nobody else
    // is: who shares a display can do harm to those who do.
    DisplayServer ownDisplay(folder + "/authority", "1024x1024x24");
    DisplayServer webDisplay(folder + "/web-authority", "64x64x24");
    SandboxProbe sandboxProbe;
    const bool isSandboxed = sandboxProbe.result();
    // While there is one thread.
    const NSString layers = isSandboxed ? NSString(u"web processes in bubblewrap")
                                        : textOf(confineWithoutSandbox(folder).names());
    channel.endWithOtherSide(folder);
    prepareEnvironment(folder, runtimeFolder);
    silenceLibraries();
    g_log_set_writer_func(logFatal, nullptr, nullptr);
    if (!useDisplay(ownDisplay) || !gtk_init_check(nullptr, nullptr) || !useDisplay(webDisplay))
        return failToStart(channel, u"Xvfb gives the web engine no display");
    if (!isSandboxed)
        NSLog(u"Pages are read without bubblewrap, which may not shut anything in here.");

    PageReader reader(folderOfThisProgram() + "/plumwick-web-extension", runtimeFolder, isSandboxed);
    if (!channel.greet(layers))
        return EXIT_SUCCESS;
    for (;;) {
        bool isMessageThere = false;
        g_unix_fd_add(
            channel.descriptor(), static_cast<GIOCondition>(G_IO_IN | G_IO_HUP),
            [](gint, GIOCondition, gpointer flag) -> gboolean {
                *static_cast<bool*>(flag) = true;
                return G_SOURCE_REMOVE;
            },
            &isMessageThere);
        while (!isMessageThere)
            g_main_context_iteration(nullptr, TRUE);
        const auto message = channel.nextMessage();
        if (!message || !channel.answer(answerTo(*message, reader, channel)))
            break;
        reader.rest();
    }
    return EXIT_SUCCESS;
}

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    const int status = kelvo::run(argumentCount > 1 ? arguments[1] : "");
    // The libraries' own endings are not waited for.
    std::_Exit(status);
}

#pragma once

#include "platform/foundation/NSDictionary.h"
#include "platform/plugins/CFPlugIn.h"

#include <cstdint>
#include <memory>

namespace kelvo {

// The objects of plug-ins, which live in plumwick-importer-engine: one for those that are installed with this system,
// which can read nothing but the file that they are handed, and one for all others, which can read files. They last
// until the next instance is created, or the engine ends. One thread.

/// The type of plug-ins that import metadata, and their interface.
inline constexpr CFUUID importerTypeIdentifier{
    {0x8B, 0x08, 0xC4, 0xBF, 0x41, 0x5B, 0x11, 0xD8, 0xB3, 0xF9, 0x00, 0x03, 0x93, 0x67, 0x26, 0xFC}};
inline constexpr CFUUID importerInterfaceIdentifier{
    {0x6E, 0xBC, 0x27, 0xC4, 0x89, 0x9C, 0x11, 0xD8, 0x84, 0xAE, 0x00, 0x03, 0x93, 0x67, 0x26, 0xFC}};

class PlugInEngine;

/// An object that has the interface of importers.
class ImporterInterface {
public:
    ImporterInterface(PlugInEngine& engine, CFPlugIn plugIn, std::uint64_t number)
        : engine_(engine), plugIn_(std::move(plugIn)), number_(number) {}

    /// Has the plug-in set what it finds in the file. What it has set is in the dictionary whatever becomes of it after
    /// that; a null value is NSNull. Answers what the plug-in does.
    ///
    /// Throws NSException: what the plug-in raises, and by the names of EngineExceptions.h what becomes of the engine,
    /// noted with the current request in sentences that name the plug-in. Throws std::runtime_error when the plug-in
    /// throws anything else.
    bool ImporterImportData(NSMutableDictionary& attributes, const NSString& contentType,
                            const NSString& path) const;

private:
    PlugInEngine& engine_;
    CFPlugIn plugIn_;
    std::uint64_t number_;
};

/// An object as its factory made it.
class CFPlugInInstance {
public:
    /// `importer` is the object that it gave when it was asked for the interface of importers, as each is at once, so that
    /// this takes no message of its own; 0: it has none.
    CFPlugInInstance(PlugInEngine& engine, CFPlugIn plugIn, std::uint64_t number, std::uint64_t importer)
        : engine_(engine), plugIn_(std::move(plugIn)), number_(number), importer_(importer) {}

    /// Null when the object has no such interface, and for every other than that of importers, the only one known here.
    std::unique_ptr<ImporterInterface> QueryInterface(const CFUUID& interface) const;
    /// Gives up the reference that the factory gave: with the next message to the engine, and before what that is about. Not
    /// to be used afterwards.
    void Release() const;

private:
    PlugInEngine& engine_;
    CFPlugIn plugIn_;
    std::uint64_t number_;
    std::uint64_t importer_;
};

/// Null when the factory makes none: it has no function, the library cannot be loaded, the function throws, ends the
/// engine or does not end in the time that a plug-in has. The last four are noted with the current request. A plug-in
/// has 12 seconds in all, from CFPlugInCreate on.
std::unique_ptr<CFPlugInInstance> CFPlugInInstanceCreate(const CFUUID& factory, const CFUUID& type,
                                                         const CFPlugIn& plugIn);

} // namespace kelvo

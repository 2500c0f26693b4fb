#pragma once

#include "platform/webkit/WebResource.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace kelvo {

/// A saved web page: its document, the files that the document uses, and an archive of the same kind for each
/// frame. Immutable and shared by reference; default-constructed it is nil, and nil has nothing in it.
class WebArchive {
public:
    /// The deepest that a frame lies within frames; those of the page itself are at depth 1. Archives are
    /// destroyed (and may be walked) by recursion, so whoever makes one keeps to this. A property list of 512
    /// levels of containers has room for just as many.
    static constexpr std::size_t maximumFrameDepth = 255;
    /// The most frames in one file, and the most subresources, those of all frames counted together.
    static constexpr std::size_t maximumFrameCount = 65536;
    static constexpr std::size_t maximumResourceCount = 65536;

    WebArchive() noexcept = default;
    WebArchive(std::nullptr_t) noexcept {}
    /// The main resource may be nil.
    WebArchive(WebResource mainResource, std::vector<WebResource> subresources,
               std::vector<WebArchive> subframeArchives);

    /// The archive in the bytes of a file: a web archive (a binary or XML property list) or MIME HTML
    /// (MIMEHTML.h), told apart by their contents. Nil for anything else, a property list without any of a
    /// web archive's keys among them, and for one nested more deeply than maximumFrameDepth. Throws
    /// only when memory runs out.
    ///
    /// In a web archive:
    /// - No key is required. A resource with a value of another type than its key's is passed over like any
    ///   element that is none; text as data counts as its UTF-8 bytes.
    /// - Frames and resources past the counts above are left out. Objects that a binary property list shares
    ///   are there as often as they are referred to, until the documents and addresses together hold 8 times
    ///   the bytes of the file (and 1 MiB); further resources are left out.
    /// - Data of a binary property list shares the bytes of `data`, and keeps all of them alive.
    static WebArchive initWithData(const NSData& data);

    bool isNil() const noexcept { return !contents_; }
    bool isIdenticalTo(const WebArchive& other) const noexcept { return contents_ == other.contents_; }

    /// The document. Nil when the archive has none that is valid; it may have frames all the same.
    const WebResource& mainResource() const noexcept;
    /// What the document uses (style sheets, images, scripts), in the archive's order. Valid, as is the next,
    /// as long as any handle on this archive.
    const std::vector<WebResource>& subresources() const noexcept;
    const std::vector<WebArchive>& subframeArchives() const noexcept;

private:
    struct Contents;
    static const Contents& none() noexcept;
    std::shared_ptr<const Contents> contents_;
};

} // namespace kelvo

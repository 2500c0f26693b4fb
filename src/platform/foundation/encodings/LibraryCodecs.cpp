#include "platform/foundation/encodings/TextCodec.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/utf16.h>

#include <iconv.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace kelvo {

namespace {

constexpr char16_t replacement = 0xFFFD;

// ICU's own callback writes U+001A for some single bytes, and it does not say that there was an error.
void replaceUndecodable(const void* context, UConverterToUnicodeArgs* arguments, const char*, std::int32_t,
                        UConverterCallbackReason reason, UErrorCode* status) {
    if (reason > UCNV_IRREGULAR)
        return;
    *static_cast<bool*>(const_cast<void*>(context)) = true;
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(arguments, &replacement, 1, 0, status);
}

// ICU's own callback drops characters that have no picture.
void stopAtUnencodable(const void*, UConverterFromUnicodeArgs*, const UChar*, std::int32_t, UChar32,
                       UConverterCallbackReason, UErrorCode*) {}

class ICUCodec final : public TextCodec {
public:
    explicit ICUCodec(UConverter* converter) : converter_(converter) {
        UErrorCode status = U_ZERO_ERROR;
        ucnv_setToUCallBack(converter, replaceUndecodable, &hadErrors_, nullptr, nullptr, &status);
        ucnv_setFromUCallBack(converter, stopAtUnencodable, nullptr, nullptr, nullptr, &status);
    }
    ICUCodec(const ICUCodec&) = delete;
    ICUCodec& operator=(const ICUCodec&) = delete;
    ~ICUCodec() override { ucnv_close(converter_); }

    Progress decode(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) override {
        Progress progress;
        if (capacity < 2) {
            progress.isOutputFull = !bytes.empty() || hasMore_;
            if (capacity == 0 || !progress.isOutputFull)
                return progress;
        }
        char16_t* target = units;
        if (heldLead_ != 0) {
            if (capacity < 2)
                return progress;
            *target++ = heldLead_;
            heldLead_ = 0;
        }
        const char* const start = reinterpret_cast<const char*>(bytes.data());
        const char* source = start;
        hadErrors_ = false;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_toUnicode(converter_, &target, units + capacity, &source, start + bytes.size(), nullptr, true,
                       &status);
        progress.bytesRead = static_cast<std::size_t>(source - start);
        hasMore_ = status == U_BUFFER_OVERFLOW_ERROR;
        if (U_FAILURE(status) && !hasMore_) {
            // No text can bring this about.
            ucnv_resetToUnicode(converter_);
            progress.bytesRead = bytes.size();
            hadErrors_ = true;
        }
        if (hasMore_ && target > units && U16_IS_LEAD(target[-1]))
            heldLead_ = *--target;
        progress.unitsWritten = static_cast<std::size_t>(target - units);
        progress.hadErrors = hadErrors_;
        progress.isOutputFull = hasMore_;
        return progress;
    }

    std::size_t encode(std::u16string_view units, std::string& bytes, bool isEnd) override {
        // ICU keeps half a pair at the end for its next call, in which it would be lost. Several halves all stay
        // out: without the last, ICU would keep the one before it.
        std::size_t length = units.size();
        while (length > 0 && U16_IS_LEAD(units[length - 1]))
            --length;
        isEnd = isEnd && length == units.size();
        const char16_t* source = units.data();
        const char16_t* const end = source + length;
        for (std::size_t room = units.size() + units.size() / 2 + 32;; room *= 2) {
            const std::size_t start = bytes.size();
            bytes.resize(start + room);
            char* target = bytes.data() + start;
            UErrorCode status = U_ZERO_ERROR;
            ucnv_fromUnicode(converter_, &target, bytes.data() + bytes.size(), &source, end, nullptr, isEnd,
                             &status);
            bytes.resize(static_cast<std::size_t>(target - bytes.data()));
            if (status == U_BUFFER_OVERFLOW_ERROR)
                continue;
            if (U_SUCCESS(status))
                return length;
            char16_t failed[U16_MAX_LENGTH * 8];
            auto failedLength = static_cast<std::int8_t>(std::size(failed));
            status = U_ZERO_ERROR;
            ucnv_getInvalidUChars(converter_, failed, &failedLength, &status);
            const auto taken = static_cast<std::size_t>(source - units.data());
            return taken - std::min(taken, static_cast<std::size_t>(std::max<int>(failedLength, 1)));
        }
    }

    void reset() override {
        ucnv_reset(converter_);
        heldLead_ = 0;
        hasMore_ = false;
    }

private:
    UConverter* converter_;
    char16_t heldLead_ = 0;
    bool hasMore_ = false;
    bool hadErrors_ = false;
};

constexpr const char* ownUTF16 = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
constexpr auto noConverter = static_cast<std::size_t>(-1);

class IconvHandle {
public:
    IconvHandle(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    IconvHandle(const IconvHandle&) = delete;
    IconvHandle& operator=(const IconvHandle&) = delete;
    ~IconvHandle() {
        if (isOpen())
            iconv_close(handle_);
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): so iconv_open says that it has none.
    bool isOpen() const { return handle_ != iconv_t(-1); }
    iconv_t get() const { return handle_; }

private:
    iconv_t handle_;
};

class IconvCodec final : public TextCodec {
public:
    explicit IconvCodec(const char* name) : decoder_(ownUTF16, name), encoder_(name, ownUTF16) {}

    bool isOpen() const { return decoder_.isOpen() && encoder_.isOpen(); }

    Progress decode(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) override {
        Progress progress;
        for (;;) {
            std::size_t count = std::min(heldEnd_ - heldStart_, capacity - progress.unitsWritten);
            if (count > 0 && count < heldEnd_ - heldStart_ && U16_IS_LEAD(held_[heldStart_ + count - 1]))
                --count;
            std::copy_n(held_.begin() + static_cast<std::ptrdiff_t>(heldStart_), count,
                        units + progress.unitsWritten);
            progress.unitsWritten += count;
            heldStart_ += count;
            progress.isOutputFull = heldStart_ < heldEnd_;
            if (progress.isOutputFull)
                return progress;
            if (progress.bytesRead < bytes.size()) {
                decodeSlice(bytes, progress);
            } else if (!isFlushed_) {
                convertIntoHeld(nullptr, nullptr);
                isFlushed_ = true;
            } else {
                isFlushed_ = false;
                return progress;
            }
        }
    }

    std::size_t encode(std::u16string_view units, std::string& bytes, bool isEnd) override {
        auto* source = const_cast<char*>(reinterpret_cast<const char*>(units.data()));
        std::size_t sourceLeft = units.size() * sizeof(char16_t);
        bool isClosing = false;
        for (std::size_t room = units.size() * 8 + 64;; room *= 2) {
            const std::size_t start = bytes.size();
            bytes.resize(start + room);
            char* target = bytes.data() + start;
            std::size_t targetLeft = room;
            std::size_t result = noConverter;
            if (!isClosing) {
                result = iconv(encoder_.get(), &source, &sourceLeft, &target, &targetLeft);
                isClosing = isEnd && result != noConverter;
            }
            const int failure = result == noConverter && !isClosing ? errno : 0;
            bool isDone = !isClosing && failure != E2BIG;
            if (isClosing)
                isDone = iconv(encoder_.get(), nullptr, nullptr, &target, &targetLeft) != noConverter ||
                         errno != E2BIG;
            bytes.resize(static_cast<std::size_t>(target - bytes.data()));
            if (isDone)
                return units.size() - sourceLeft / sizeof(char16_t);
        }
    }

    void reset() override {
        iconv(decoder_.get(), nullptr, nullptr, nullptr, nullptr);
        iconv(encoder_.get(), nullptr, nullptr, nullptr, nullptr);
        heldStart_ = heldEnd_ = 0;
        isFlushed_ = false;
    }

private:
    // glibc loses or repeats characters of some encodings when its output is full, so it never is: a slice
    // always fits, and is handed out from here.
    static constexpr std::size_t sliceLength = 512;
    static constexpr std::size_t heldCapacity = sliceLength * 4;

    bool convertIntoHeld(char** source, std::size_t* sourceLeft) {
        auto* target = reinterpret_cast<char*>(held_.data());
        std::size_t targetLeft = held_.size() * sizeof(char16_t);
        const bool isConverted =
            iconv(decoder_.get(), source, sourceLeft, &target, &targetLeft) != noConverter;
        heldStart_ = 0;
        heldEnd_ = held_.size() - targetLeft / sizeof(char16_t);
        return isConverted;
    }

    void decodeSlice(std::span<const std::uint8_t> bytes, Progress& progress) {
        const auto rest = bytes.subspan(progress.bytesRead);
        const std::size_t length = std::min(rest.size(), sliceLength);
        auto* source = const_cast<char*>(reinterpret_cast<const char*>(rest.data()));
        std::size_t sourceLeft = length;
        if (!convertIntoHeld(&source, &sourceLeft)) {
            const bool isCutOff = errno == EINVAL;
            // A character cut off by the end of the slice comes with the next one.
            if (!isCutOff || length == rest.size() || sourceLeft == length) {
                if (heldEnd_ < held_.size())
                    held_[heldEnd_++] = replacement;
                progress.hadErrors = true;
                sourceLeft -= isCutOff ? sourceLeft : std::min<std::size_t>(sourceLeft, 1);
            }
        }
        progress.bytesRead += length - sourceLeft;
    }

    IconvHandle decoder_;
    IconvHandle encoder_;
    std::array<char16_t, heldCapacity> held_;
    std::size_t heldStart_ = 0;
    std::size_t heldEnd_ = 0;
    bool isFlushed_ = false;
};

// One converter of each name stays open for good: glibc would unload its module with the last one and take a
// millisecond to load it again.
bool isIconvAvailable(const char* name) {
    static std::mutex mutex;
    static std::map<std::string, IconvHandle, std::less<>> known;
    const std::lock_guard lock(mutex);
    return known.try_emplace(name, ownUTF16, name).first->second.isOpen();
}

} // namespace

std::unique_ptr<TextCodec> makeICUCodec(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name, &status);
    if (U_FAILURE(status))
        return nullptr;
    return std::make_unique<ICUCodec>(converter);
}

std::unique_ptr<TextCodec> makeIconvCodec(const char* name) {
    if (!isIconvAvailable(name))
        return nullptr;
    auto codec = std::make_unique<IconvCodec>(name);
    return codec->isOpen() ? std::move(codec) : nullptr;
}

} // namespace kelvo

#include "platform/pdfkit/engine/LockedDocument.h"

#include "platform/pdfkit/engine/LateLibrary.h"

#include <qpdf/qpdf-c.h>

#include <array>
#include <memory>

namespace kelvo {
namespace {

constexpr int deepestPageTree = 64;
/// "1 0 obj<<>>endobj": what a page takes at least, where it is no part of what is encrypted.
constexpr std::size_t leastBytesOfPage = 17;

/// The library's functions.
struct QPDFLibrary {
    QPDFLibrary() {
        LateLibrary library("libqpdf.so.29");
        library.find(init, "qpdf_init");
        library.find(cleanup, "qpdf_cleanup");
        library.find(silence, "qpdf_silence_errors");
        library.find(suppressWarnings, "qpdf_set_suppress_warnings");
        library.find(read, "qpdf_read_memory");
        library.find(hasError, "qpdf_has_error");
        library.find(error, "qpdf_get_error");
        library.find(errorCode, "qpdf_get_error_code");
        library.find(trailer, "qpdf_get_trailer");
        library.find(key, "qpdf_oh_get_key");
        library.find(isDictionary, "qpdf_oh_is_dictionary");
        library.find(isArray, "qpdf_oh_is_array");
        library.find(count, "qpdf_oh_get_array_n_items");
        library.find(item, "qpdf_oh_get_array_item");
        library.find(integer, "qpdf_oh_get_value_as_longlong");
        library.find(number, "qpdf_oh_get_value_as_number");
        isComplete = library.isComplete();
    }

    bool isComplete;
    decltype(qpdf_init)* init;
    decltype(qpdf_cleanup)* cleanup;
    decltype(qpdf_silence_errors)* silence;
    decltype(qpdf_set_suppress_warnings)* suppressWarnings;
    decltype(qpdf_read_memory)* read;
    decltype(qpdf_has_error)* hasError;
    decltype(qpdf_get_error)* error;
    decltype(qpdf_get_error_code)* errorCode;
    decltype(qpdf_get_trailer)* trailer;
    decltype(qpdf_oh_get_key)* key;
    decltype(qpdf_oh_is_dictionary)* isDictionary;
    decltype(qpdf_oh_is_array)* isArray;
    decltype(qpdf_oh_get_array_n_items)* count;
    decltype(qpdf_oh_get_array_item)* item;
    decltype(qpdf_oh_get_value_as_longlong)* integer;
    decltype(qpdf_oh_get_value_as_number)* number;
};

const QPDFLibrary& library() {
    static const QPDFLibrary functions;
    return functions;
}

/// Objects are numbers that the document gives out; what goes wrong with one makes it null.
class Document {
public:
    Document() : data_(library().init()) {
        library().silence(data_);
        library().suppressWarnings(data_, QPDF_TRUE);
    }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document() { library().cleanup(&data_); }

    /// False when there is more in its way than a missing key: before it asks for one, it has found the objects.
    bool read(std::string_view file) {
        library().read(data_, "document", file.data(), file.size(), nullptr);
        return !library().hasError(data_) ||
               library().errorCode(data_, library().error(data_)) == qpdf_e_password;
    }

    qpdf_oh trailer() { return library().trailer(data_); }
    qpdf_oh valueOfKey(qpdf_oh dictionary, const char* key) { return library().key(data_, dictionary, key); }
    bool isDictionary(qpdf_oh object) { return library().isDictionary(data_, object) != QPDF_FALSE; }
    /// 0 where it is no array.
    int count(qpdf_oh array) {
        return library().isArray(data_, array) != QPDF_FALSE ? library().count(data_, array) : 0;
    }
    qpdf_oh item(qpdf_oh array, int index) { return library().item(data_, array, index); }

    std::optional<long long> integer(qpdf_oh object) {
        long long value = 0;
        return library().integer(data_, object, &value) != QPDF_FALSE ? std::optional(value) : std::nullopt;
    }

    std::optional<PageBox> rectangle(qpdf_oh array) {
        std::array<double, 4> corners{};
        if (count(array) != static_cast<int>(corners.size()))
            return std::nullopt;
        for (std::size_t index = 0; index < corners.size(); ++index) {
            if (library().number(data_, item(array, static_cast<int>(index)), &corners[index]) == QPDF_FALSE)
                return std::nullopt;
        }
        return PageBox{corners[0], corners[1], corners[2] - corners[0], corners[3] - corners[1]};
    }

private:
    qpdf_data data_;
};

/// Pages have the box of the nearest group that they are in when they have none of their own.
std::optional<PageBox> firstMediaBoxIn(Document& document, qpdf_oh node) {
    std::optional<PageBox> box;
    for (int depth = 0; depth < deepestPageTree && document.isDictionary(node); ++depth) {
        if (const auto own = document.rectangle(document.valueOfKey(node, "/MediaBox")))
            box = own;
        const qpdf_oh kids = document.valueOfKey(node, "/Kids");
        if (document.count(kids) == 0)
            return box;
        node = document.item(kids, 0);
    }
    return std::nullopt;
}

} // namespace

LockedDocument readLockedDocument(std::string_view file) {
    LockedDocument facts;
    if (!library().isComplete)
        return facts;
    Document document;
    if (!document.read(file))
        return facts;
    const qpdf_oh root = document.valueOfKey(document.trailer(), "/Root");
    const qpdf_oh pages = document.isDictionary(root) ? document.valueOfKey(root, "/Pages") : root;
    if (!document.isDictionary(pages))
        return facts;
    const auto count = document.integer(document.valueOfKey(pages, "/Count"));
    if (count && *count >= 0 && static_cast<std::size_t>(*count) <= file.size() / leastBytesOfPage)
        facts.pageCount = static_cast<int>(*count);
    facts.firstMediaBox = firstMediaBoxIn(document, pages);
    return facts;
}

} // namespace kelvo

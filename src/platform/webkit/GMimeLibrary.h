#pragma once

#include <gmime/gmime.h>

#include <memory>

namespace kelvo {

// What is called of GMime and of the GLib libraries that it brings along.
#define KELVO_GMIME_FUNCTIONS(each)                                                                          \
    each(g_mime_init);                                                                                       \
    each(g_object_unref);                                                                                    \
    each(g_type_check_instance_is_a);                                                                        \
    each(g_byte_array_new);                                                                                  \
    each(g_byte_array_sized_new);                                                                            \
    each(g_byte_array_free);                                                                                 \
    each(g_byte_array_unref);                                                                                \
    each(g_mime_stream_mem_new_with_byte_array);                                                             \
    each(g_mime_stream_mem_set_owner);                                                                       \
    each(g_mime_stream_length);                                                                              \
    each(g_mime_parser_new_with_stream);                                                                     \
    each(g_mime_parser_construct_part);                                                                      \
    each(g_mime_multipart_get_type);                                                                         \
    each(g_mime_multipart_get_count);                                                                        \
    each(g_mime_multipart_get_part);                                                                         \
    each(g_mime_part_get_type);                                                                              \
    each(g_mime_part_get_content);                                                                           \
    each(g_mime_object_get_content_type);                                                                    \
    each(g_mime_object_get_content_id);                                                                      \
    each(g_mime_object_get_header);                                                                          \
    each(g_mime_object_get_header_list);                                                                     \
    each(g_mime_header_list_get_header);                                                                     \
    each(g_mime_header_get_raw_value);                                                                       \
    each(g_mime_content_type_get_media_type);                                                                \
    each(g_mime_content_type_get_media_subtype);                                                             \
    each(g_mime_content_type_get_parameter);                                                                 \
    each(g_mime_data_wrapper_get_stream);                                                                    \
    each(g_mime_data_wrapper_write_to_stream)

/// GMime, which is loaded and set going when it is first asked for. Linked, it would bring along eighteen
/// libraries, which cost every start of the service some milliseconds.
struct GMimeLibrary {
    /// Null when it is not installed or not the version that this was compiled for.
    static const GMimeLibrary* loaded();

#define KELVO_DECLARE(function) decltype(&::function) function = nullptr
    KELVO_GMIME_FUNCTIONS(KELVO_DECLARE);
#undef KELVO_DECLARE

    bool isInstance(void* object, GType type) const {
        return object && g_type_check_instance_is_a(static_cast<GTypeInstance*>(object), type);
    }
};

/// Owns a reference to one of GMime's objects.
struct GMimeUnref {
    void operator()(void* object) const { GMimeLibrary::loaded()->g_object_unref(object); }
};
template <typename T>
using GMimeReference = std::unique_ptr<T, GMimeUnref>;

} // namespace kelvo

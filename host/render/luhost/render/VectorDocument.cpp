#include <luhost/render/VectorDocument.h>

#include <librsvg/rsvg.h>
#include <utility>

namespace luhost::render
{

namespace
{

struct ObjectDeleter {
    void operator()(void* object) const noexcept { g_object_unref(object); }
};

} // namespace

struct VectorDocument::Handle {
    std::unique_ptr<RsvgHandle, ObjectDeleter> rsvg;
};

VectorDocument::VectorDocument(std::unique_ptr<Handle> handle) : m_handle(std::move(handle)) {}
VectorDocument::~VectorDocument() = default;

std::unique_ptr<VectorDocument> VectorDocument::Read(const std::string& svg)
{
    const std::unique_ptr<GInputStream, ObjectDeleter> stream(
        g_memory_input_stream_new_from_data(svg.data(), static_cast<gssize>(svg.size()), nullptr));
    auto handle = std::make_unique<Handle>();
    handle->rsvg.reset(
        rsvg_handle_new_from_stream_sync(stream.get(), nullptr, RSVG_HANDLE_FLAGS_NONE, nullptr, nullptr));
    return handle->rsvg ? std::unique_ptr<VectorDocument>(new VectorDocument(std::move(handle))) : nullptr;
}

void VectorDocument::Draw(cairo_t* context, double width, double height)
{
    const RsvgRectangle viewport{0.0, 0.0, width, height};
    GError* error = nullptr;
    // Other viewers show the rest of such a document, too.
    if (!rsvg_handle_render_document(m_handle->rsvg.get(), context, &viewport, &error)) {
        m_problem = error ? error->message : "unknown";
        g_clear_error(&error);
    }
}

} // namespace luhost::render

#include <luhost/render/CairoHandles.h>

#include <new>
#include <string>

namespace luhost::render
{

cairo_status_t AppendToText(void* closure, const unsigned char* bytes, unsigned int count) noexcept
{
    try {
        static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(bytes), count);
        return CAIRO_STATUS_SUCCESS;
    } catch (const std::bad_alloc&) {
        return CAIRO_STATUS_WRITE_ERROR;
    }
}

} // namespace luhost::render

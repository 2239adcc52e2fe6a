#pragma once

#include <cairo.h>
#include <memory>
#include <string>

namespace luhost::render
{

/// An SVG document ready to be drawn. It reads no files.
class VectorDocument
{
public:
    /// Null for one that cannot be read.
    static std::unique_ptr<VectorDocument> Read(const std::string& svg);
    ~VectorDocument();

    /// Over the box from the origin to (width, height), in its own proportions. What cannot be drawn is missing.
    void Draw(cairo_t* context, double width, double height);
    /// Why something was missing; empty as long as nothing was.
    const std::string& GetProblem() const noexcept { return m_problem; }

private:
    struct Handle;
    explicit VectorDocument(std::unique_ptr<Handle> handle);

    std::unique_ptr<Handle> m_handle;
    std::string m_problem;
};

} // namespace luhost::render

#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/ImageData.h>
#include <luk/Object.h>

#include <string>

namespace luk
{

/// A picture by the place where its file is, and what has been loaded from there.
///
/// Threads: belongs to the host thread.
class LUHOST_API Image : public Object, public virtual du::RefCounted
{
public:
    Image() = default;
    ~Image() override;

    /// "file:///" and a path, or a plain path. What was loaded from another place stays until the next load.
    void SetURL(const du::Symbol& url) { m_url = url; }
    const du::Symbol& GetURL() const noexcept { return m_url; }

    /// Null until a load has succeeded. Each load gives the picture as the file has it.
    const du::SmartPtr<ImageData>& GetImageData() const noexcept { return m_data; }
    void SetImageData(const du::SmartPtr<ImageData>& data) { m_data = data; }

    /// Why the last load failed, such as "the file is cut off"; empty when it did not.
    const std::string& GetProblem() const noexcept { return m_problem; }
    void SetProblem(std::string problem) { m_problem = std::move(problem); }

private:
    du::Symbol m_url;
    du::SmartPtr<ImageData> m_data;
    std::string m_problem;
};

} // namespace luk

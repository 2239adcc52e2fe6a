#pragma once

#include <du/RefCounted.h>
#include <du/Symbol.h>
#include <luk/Object.h>

namespace luk
{

/// Where the files that belong to a document are.
///
/// Threads: read on any thread.
class LUHOST_API Anchor : public Object, public virtual du::RefCounted
{
public:
    /// @param folder absolute path of the folder into which the document was unpacked, without a separator at its end
    explicit Anchor(const du::Symbol& folder);
    ~Anchor() override;

    /// Names a file of the document, whether it is there or not.
    /// @param file one component, below "Symbols"; anything that would lead elsewhere names no file
    /// @param[out] url "file:///" and the path; untouched when the result is false
    /// @param asUrl false for the plain path
    bool GetURLForFileSource(const du::Symbol& file, du::Symbol& url, bool asUrl) const;

private:
    du::Symbol m_folder;
};

} // namespace luk

#pragma once

#include <luk/Annotation.h>

#include <cstdint>

namespace luannotations
{

/// Annotation of the annotation library: a kernel annotation with a kind and flags, which are kept and can be read and
/// have no other effect, since the class word decides everything.
class LUHOST_API Annotation : public luk::Annotation
{
public:
    ~Annotation() override;

    std::uint32_t GetKind() const noexcept { return m_kind; }
    std::uint32_t GetFlags() const noexcept { return m_flags; }

protected:
    Annotation(std::uint32_t kind, std::uint32_t flags);
    Annotation(const Annotation&);
    Annotation& operator=(const Annotation&);

private:
    std::uint32_t m_kind;
    std::uint32_t m_flags;
};

} // namespace luannotations

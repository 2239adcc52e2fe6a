#pragma once

#include <luk/Annotation.h>
#include <luk/SerializedContentVisitor.h>

namespace luk
{

/// Reads what every annotation saves: name, id path, visibility. An annotation's own visitor derives from it, takes its own
/// keys first and asks it for the rest.
///
/// What neither knows is kept in the annotation, and Annotation::Visit writes it again behind the common content, so that
/// a document passes through an older program unharmed.
///
/// Threads and locks: the caller holds the annotation's write lock.
class LUHOST_API Annotation::SerializedContentVisitor : public luk::SerializedContentVisitor
{
public:
    /// @param annotation outlives the visitor
    explicit SerializedContentVisitor(Annotation& annotation);
    ~SerializedContentVisitor() override;

    /// The key under which an annotation saves its id path.
    static const du::Symbol& GetIdPathKey();

    bool VisitSymbol(const du::Symbol& key, const du::Symbol& value) override;
    bool VisitBool(const du::Symbol& key, bool value) override;
    void OnRefused(const SerializedContentElement::Property& property) override;
    void OnRefused(const SerializedContentElement& child) override;

private:
    SerializedContentElement& KeptContent();

    Annotation& m_annotation;
};

} // namespace luk

#include <dp/ReadLockGuard.h>
#include <luk/AnnotationContentVisitor.h>

namespace luk
{

namespace
{

/// Keys of what every annotation saves.
struct Keys {
    du::Symbol id{"annoId"};
    du::Symbol name{"annoName"};
    du::Symbol visible{"annoVisible"};

    static const Keys& Get()
    {
        static const Keys keys;
        return keys;
    }
};

} // namespace

void Annotation::Visit(SerializedContentElement& element)
{
    const dp::ReadLockGuard lock(GetLock());
    element.AddProperty(Keys::Get().id, m_idPath);
    element.AddProperty(Keys::Get().name, m_objectName);
    element.AddProperty(Keys::Get().visible, m_visible);
    if (!m_unknownContent) {
        return;
    }
    for (const SerializedContentElement::Property& property : m_unknownContent->GetProperties()) {
        element.AddProperty(property);
    }
    for (std::size_t i = 0; i < m_unknownContent->GetChildCount(); ++i) {
        element.AddChild(m_unknownContent->GetChild(i));
    }
}

// Whoever makes a visitor reads the content anew.
Annotation::SerializedContentVisitor::SerializedContentVisitor(Annotation& annotation) : m_annotation(annotation)
{
    m_annotation.m_unknownContent.reset();
}

Annotation::SerializedContentVisitor::~SerializedContentVisitor() = default;

const du::Symbol& Annotation::SerializedContentVisitor::GetIdPathKey() { return Keys::Get().id; }

bool Annotation::SerializedContentVisitor::VisitSymbol(const du::Symbol& key, const du::Symbol& value)
{
    if (key == Keys::Get().id) {
        m_annotation.m_idPath = value;
    } else if (key == Keys::Get().name) {
        m_annotation.m_objectName = value;
    } else {
        return false;
    }
    return true;
}

bool Annotation::SerializedContentVisitor::VisitBool(const du::Symbol& key, bool value)
{
    const bool isKnown = key == Keys::Get().visible;
    if (isKnown) {
        m_annotation.m_visible = value;
    }
    return isKnown;
}

void Annotation::SerializedContentVisitor::OnRefused(const SerializedContentElement::Property& property)
{
    KeptContent().AddProperty(property);
}

void Annotation::SerializedContentVisitor::OnRefused(const SerializedContentElement& child)
{
    KeptContent().AddChild(child);
}

SerializedContentElement& Annotation::SerializedContentVisitor::KeptContent()
{
    if (!m_annotation.m_unknownContent) {
        m_annotation.m_unknownContent = std::make_unique<SerializedContentElement>();
    }
    return *m_annotation.m_unknownContent;
}

} // namespace luk

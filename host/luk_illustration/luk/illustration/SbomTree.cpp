#include <du/PlaceMap.h>
#include <luk/IdPath.h>
#include <luk/illustration/SbomTree.h>
#include <luk/Instance.h>

#include <utility>
#include <vector>

namespace luk::illustration
{

class SbomTree::Index
{
public:
    du::PlaceMap<du::Symbol, du::SmartPtr<SbomInstance>> byPath; ///< all but the root

    static void CutLinks(SbomInstance& instance) noexcept
    {
        instance.DropPart();
        instance.m_parent = nullptr;
        instance.m_firstChild = nullptr;
        instance.m_lastChild = nullptr;
        instance.m_previous = nullptr;
        instance.m_next = nullptr;
    }
};

SbomTree::SbomTree() : m_root(new SbomInstance(nullptr, du::Symbol(), {})), m_index(std::make_unique<Index>()) {}

SbomTree::~SbomTree()
{
    m_index->byPath.ForEach(
        [](const du::Symbol&, const du::SmartPtr<SbomInstance>& instance) { Index::CutLinks(*instance); });
    Index::CutLinks(*m_root);
}

std::size_t SbomTree::GetInstanceCount() const noexcept { return m_index->byPath.GetCount(); }

du::SmartPtr<SbomInstance> SbomTree::FindInstance(const du::Symbol& path) const
{
    const du::SmartPtr<SbomInstance>* const found = m_index->byPath.Find(path);
    return found ? *found : nullptr;
}

bool SbomTree::IsHere(const SbomInstance& instance) const
{
    return &instance == m_root.get() || FindInstance(instance.m_idPath).get() == &instance;
}

du::SmartPtr<SbomInstance> SbomTree::AddInstance(const du::SmartPtr<SbomInstance>& parent, const du::Symbol& id,
                                                 const std::string& name, const du::SmartPtr<luk::Instance>& part)
{
    SbomInstance& above = parent ? *parent : *m_root;
    if (!IdPath::IsComponent(id) || !IsHere(above) || (part && (!part->GetTree() || part->m_sbomInstance)) ||
        FindInstance(du::Symbol::Find(IdPath::Join(above.m_idPath, id)))) {
        return {};
    }
    du::SmartPtr<SbomInstance> made(new SbomInstance(&above, id, name));
    made->m_previous = above.m_lastChild;
    (above.m_lastChild ? above.m_lastChild->m_next : above.m_firstChild) = made.get();
    above.m_lastChild = made.get();
    if (part) {
        made->m_ebomInstance = part.get();
        part->m_sbomInstance = made.get();
    }
    m_index->byPath.TryEmplace(made->m_idPath, made);
    return made;
}

bool SbomTree::RemoveInstance(const du::SmartPtr<SbomInstance>& instance)
{
    if (!instance || instance == m_root || !IsHere(*instance)) {
        return false;
    }
    const du::SmartPtr<SbomInstance> top = instance;
    SbomInstance& above = *top->m_parent;
    (top->m_previous ? top->m_previous->m_next : above.m_firstChild) = top->m_next;
    (top->m_next ? top->m_next->m_previous : above.m_lastChild) = top->m_previous;

    std::vector<SbomInstance*> due{top.get()};
    while (!due.empty()) {
        SbomInstance* const removed = due.back();
        due.pop_back();
        for (SbomInstance* child = removed->m_firstChild; child; child = child->m_next) {
            due.push_back(child);
        }
        Index::CutLinks(*removed);
        m_index->byPath.Take(removed->m_idPath);
    }
    return true;
}

} // namespace luk::illustration

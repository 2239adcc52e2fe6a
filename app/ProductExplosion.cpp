#include "ProductExplosion.h"

#include "DocumentSource.h"
#include "Finding.h"
#include "FollowingSymbols.h"
#include "PartLookup.h"
#include "PartState.h"
#include "Printable.h"

#include <dg/DBox.h>
#include <luhost/Document.h>
#include <luhost/ProductModel.h>
#include <luk/Instance.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>

#include <unordered_map>
#include <vector>

namespace lusym
{

namespace
{

/// A part or an assembly, where it stands, and the box around all that is in it.
struct Item {
    du::SmartPtr<luk::ShapeInstance> part;
    std::size_t parent = 0; ///< of the items; its own number on level 1
    int level = 1;
    dg::Location location;
    dg::DBox box;
    dg::DVec3 way;
};

class Exploder
{
public:
    explicit Exploder(const luhost::Document& document)
    {
        std::unordered_map<const luk::Instance*, std::size_t> numbers;
        for (const auto& part : PartsOf(document)) {
            const std::size_t number = m_items.size();
            const auto parent = numbers.find(part->GetInstance()->GetParent());
            numbers.emplace(part->GetInstance().get(), number);
            Item& item = m_items.emplace_back(Item{part, number, 1, part->GetLocation(), BoxOf(*part), {}});
            if (parent != numbers.end()) {
                item.parent = parent->second;
                item.level = m_items[parent->second].level + 1;
            }
        }
        for (std::size_t number = m_items.size(); number-- > 0;) {
            m_items[m_items[number].parent].box.Enclose(m_items[number].box);
            m_box.Enclose(m_items[number].box);
        }
    }

    bool FindWays(const Explosion& explosion, std::string& problem)
    {
        for (Item& item : m_items) {
            if (item.level > explosion.levels) {
                item.way = m_items[item.parent].way;
            } else if (!item.box.IsEmpty()) {
                item.way = (item.box.GetCenter() - m_box.GetCenter()) * explosion.factor;
            }
            item.location.SetPosition(item.location.GetPosition() + item.way);
            if (item.location.HasPosition() && !luhost::CheckProductLocation(item.location, problem)) {
                problem.insert(0, Quote(item.part->GetInstance()->GetIdPath().GetText()) + " would go too far: ");
                return false;
            }
        }
        return true;
    }

    /// Each by itself: the place of a part that was moved by hand is not that of its assembly.
    void Move(luk::ShapeScene& scene) const
    {
        const luk::ShapeScene::UpdateBatch batch(scene);
        for (const Item& item : m_items) {
            item.part->SetLocation(item.location, true);
        }
    }

private:
    std::vector<Item> m_items; ///< assemblies before what is in them
    dg::DBox m_box;
};

} // namespace

bool ExplodeProduct(DocumentSource& source, const Explosion& explosion, std::string& problem)
{
    Exploder exploder(source.GetDocument());
    if (!exploder.FindWays(explosion, problem)) {
        return false;
    }
    FollowingSymbols following(source);
    exploder.Move(*source.GetDocument().GetShapeScene());
    source.WaitForLoads();
    following.Finish();
    return true;
}

} // namespace lusym

#include "SceneConversion.h"

#include <algorithm>
#include <array>
#include <assimp/GltfMaterial.h>
#include <assimp/scene.h>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace luhost::io
{

namespace
{

using Component = ProductModel::Component;
using Use = ProductModel::Use;
using Settings = SceneConversion::Settings;

bool Fail(std::string& problem, std::string reason)
{
    problem = std::move(reason);
    return false;
}

std::string TextOf(const aiString& text) { return std::string(text.C_Str(), ::strnlen(text.C_Str(), text.length)); }

// Names

/// Names that importers make up have no meaning for people.
std::string NameOf(std::string name)
{
    constexpr std::size_t kMaxBytes = 200;
    const bool isNumbered = (name.starts_with("nodes[") || name.starts_with("meshes[")) && name.ends_with(']');
    if (isNumbered || name.starts_with('<') || name.starts_with("$$")) {
        return {};
    }
    for (char& c : name) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
    }
    if (name.size() > kMaxBytes) {
        std::size_t end = kMaxBytes;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80) {
            --end;
        }
        name.resize(end);
    }
    return name;
}

std::string NameOf(const aiString& text) { return NameOf(TextOf(text)); }

/// "Bolt" of "Bolt-3" and "Bolt.003": what the occurrences of one component have in common.
std::string WithoutNumber(const std::string& name)
{
    const std::size_t digits = name.find_last_not_of("0123456789");
    if (digits == std::string::npos || digits + 1 == name.size() ||
        std::string_view("-_. :").find(name[digits]) == std::string_view::npos) {
        return name;
    }
    const std::size_t end = name.find_last_not_of("-_. :", digits);
    return end == std::string::npos ? name : name.substr(0, end + 1);
}

/// Ids of the uses in one component: names as they are where they can be ids, and each only once.
class IdMaker
{
public:
    std::string Make(std::string name)
    {
        std::replace(name.begin(), name.end(), '/', '_');
        if (name.empty()) {
            name = "part";
        }
        if (name.starts_with("symbol:")) {
            name.insert(0, 1, '_');
        }
        std::string id = name;
        for (std::size_t& number = m_numbers[name]; !m_ids.insert(id).second;) {
            number = std::max<std::size_t>(number, 1) + 1;
            id = name + "-" + std::to_string(number);
        }
        return id;
    }

private:
    std::unordered_map<std::string, std::size_t> m_numbers;
    std::unordered_set<std::string> m_ids;
};

// Meshes

/// Vertices at one place are joined, which importers keep apart for their normals.
struct PlaceHash {
    std::size_t operator()(const dg::FVec3& at) const noexcept
    {
        std::uint64_t hash = 0x9E3779B97F4A7C15U;
        for (const float value : {at.x, at.y, at.z}) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            hash = (hash ^ bits) * 0xD6E8FEB86659FD93U;
            hash ^= hash >> 32U;
        }
        return static_cast<std::size_t>(hash);
    }
};

float LinearToDisplay(float share)
{
    return share <= 0.0031308F ? 12.92F * share : 1.055F * std::pow(share, 1.0F / 2.4F) - 0.055F;
}

class MeshMaker
{
public:
    MeshMaker(const aiScene& scene, const Settings& settings, double scale)
        : m_scene(scene), m_settings(settings), m_scale(scale)
    {
    }

    /// One mesh of those that a node shows together. @return false with the reason; null when it has no triangle
    bool Make(const std::vector<unsigned int>& numbers, du::SmartPtr<luk::Mesh>& mesh, std::string& problem)
    {
        std::vector<dg::FVec3> positions;
        std::vector<std::uint32_t> indices;
        std::vector<luk::Mesh::Part> parts;
        std::unordered_map<dg::FVec3, std::uint32_t, PlaceHash> places;
        for (const unsigned int number : numbers) {
            const aiMesh& read = *m_scene.mMeshes[number];
            const std::size_t first = indices.size() / 3;
            if (!AddTriangles(read, places, positions, indices, problem)) {
                problem.insert(0, "the mesh \"" + NameOf(read.mName) + "\": ");
                return false;
            }
            AddParts(read, first, indices, parts);
        }
        mesh = indices.empty() ? nullptr
                               : du::MakeCounted<luk::Mesh>(std::move(positions), std::move(indices), std::move(parts));
        return true;
    }

private:
    bool AddTriangles(const aiMesh& read, std::unordered_map<dg::FVec3, std::uint32_t, PlaceHash>& places,
                      std::vector<dg::FVec3>& positions, std::vector<std::uint32_t>& indices, std::string& problem)
    {
        std::vector<std::uint32_t> welded(read.mNumVertices);
        places.reserve(places.size() + read.mNumVertices / 4);
        for (unsigned int i = 0; i < read.mNumVertices; ++i) {
            // Adding zero makes the two zeros one.
            const auto scaled = [this](float value) { return static_cast<float>(value * m_scale) + 0.0F; };
            const aiVector3D& vertex = read.mVertices[i];
            const dg::FVec3 at(scaled(vertex.x), scaled(vertex.y), scaled(vertex.z));
            if (!std::isfinite(at.x) || !std::isfinite(at.y) || !std::isfinite(at.z)) {
                return Fail(problem, "vertex " + std::to_string(i) + " is at no place");
            }
            const auto [place, isNew] = places.try_emplace(at, static_cast<std::uint32_t>(positions.size()));
            if (isNew) {
                positions.push_back(at);
            }
            welded[i] = place->second;
        }
        for (unsigned int i = 0; i < read.mNumFaces; ++i) {
            const aiFace& face = read.mFaces[i];
            if (face.mNumIndices != 3) {
                continue; // points and lines
            }
            const unsigned int* const corners = face.mIndices;
            if (std::max({corners[0], corners[1], corners[2]}) >= read.mNumVertices) {
                return Fail(problem, "triangle " + std::to_string(i) + " has no such corners");
            }
            const std::uint32_t a = welded[corners[0]];
            const std::uint32_t b = welded[corners[1]];
            const std::uint32_t c = welded[corners[2]];
            if (a != b && b != c && c != a) {
                indices.insert(indices.end(), {a, b, c});
                m_colors.push_back(PaintOf(read, corners));
            }
        }
        m_triangles += read.mNumFaces;
        return m_triangles <= m_settings.maximumTriangles ||
               Fail(problem, "there are more than " + std::to_string(m_settings.maximumTriangles) + " triangles");
    }

    /// The colour of a triangle by those of its corners, in steps of 1/255; 0 where they have none.
    static std::uint32_t PaintOf(const aiMesh& read, const unsigned int* corners)
    {
        const aiColor4D* const paints = read.mColors[0];
        if (!paints) {
            return 0;
        }
        const auto channel = [&](float aiColor4D::*share) {
            const float sum = paints[corners[0]].*share + paints[corners[1]].*share + paints[corners[2]].*share;
            return sum > 0.0F ? static_cast<std::uint32_t>(std::lround(std::min(sum / 3.0F, 1.0F) * 255.0F)) : 0U;
        };
        return 0xFF000000U | channel(&aiColor4D::r) << 16U | channel(&aiColor4D::g) << 8U | channel(&aiColor4D::b);
    }

    /// Puts the triangles since `first` into runs of one colour; those of the same colour come together.
    void AddParts(const aiMesh& read, std::size_t first, std::vector<std::uint32_t>& indices,
                  std::vector<luk::Mesh::Part>& parts)
    {
        const std::vector<std::uint32_t> colors = std::exchange(m_colors, {});
        std::map<std::uint32_t, std::vector<std::uint32_t>> runs;
        for (std::size_t i = 0; i < colors.size(); ++i) {
            const std::uint32_t* const corners = &indices[3 * (first + i)];
            runs[colors[i]].insert(runs[colors[i]].end(), corners, corners + 3);
        }
        const dg::Color plain = ColorOf(read);
        indices.resize(3 * first);
        for (const auto& [color, corners] : runs) {
            const auto share = [paint = color](unsigned shift) {
                return static_cast<float>(paint >> shift & 0xFFU) / 255.0F;
            };
            parts.push_back({static_cast<std::uint32_t>(indices.size() / 3),
                             static_cast<std::uint32_t>(corners.size() / 3),
                             color == 0 ? plain : dg::Color(share(16), share(8), share(0), plain.alpha)});
            indices.insert(indices.end(), corners.begin(), corners.end());
        }
    }

    /// Where the file names no material, the importers add one: with a name that tells it, or a white one without a name at
    /// the end. On paper, white bodies would have no faces.
    static bool IsMadeUp(const aiMaterial& material, const aiColor4D& diffuse, bool isLast)
    {
        aiString name;
        const bool hasName = material.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS && name.length > 0;
        return hasName ? TextOf(name) == AI_DEFAULT_MATERIAL_NAME
                       : isLast && diffuse.r >= 1.0F && diffuse.g >= 1.0F && diffuse.b >= 1.0F;
    }

    dg::Color ColorOf(const aiMesh& read) const
    {
        luk::Mesh::Part plain;
        if (read.mMaterialIndex >= m_scene.mNumMaterials) {
            return plain.color;
        }
        const aiMaterial& material = *m_scene.mMaterials[read.mMaterialIndex];
        aiColor4D diffuse;
        if (material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) != aiReturn_SUCCESS ||
            IsMadeUp(material, diffuse, read.mMaterialIndex + 1 == m_scene.mNumMaterials)) {
            return plain.color;
        }
        // Written so that what is no number becomes 0.
        const auto share = [](float value) { return value > 0.0F ? std::min(value, 1.0F) : 0.0F; };
        const auto shown = [&](float value) {
            return m_settings.areColorsLinear ? share(LinearToDisplay(share(value))) : share(value);
        };
        return {shown(diffuse.r), shown(diffuse.g), shown(diffuse.b), share(AlphaOf(material, diffuse.a))};
    }

    /// Nothing is made to be seen nowhere: exporters that write 0 mean how much of what is behind is seen.
    static float AlphaOf(const aiMaterial& material, float alphaOfColor)
    {
        float opacity = 1.0F;
        material.Get(AI_MATKEY_OPACITY, opacity);
        aiString mode;
        const bool isOpaque =
            material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS && TextOf(mode) == "OPAQUE";
        const float alpha = std::min(alphaOfColor, opacity);
        return isOpaque || !(alpha > 0.0F) ? 1.0F : alpha;
    }

    const aiScene& m_scene;
    const Settings& m_settings;
    double m_scale;
    std::size_t m_triangles = 0;
    std::vector<std::uint32_t> m_colors; ///< of the triangles of the mesh that is being read
};

// The hierarchy

template <class T>
void AppendBytes(std::string& key, const T& value)
{
    static_assert(std::is_trivially_copyable_v<T>);
    const std::size_t before = key.size();
    key.resize(before + sizeof(T));
    std::memcpy(key.data() + before, &value, sizeof(T));
}

/// By which components that are alike are known.
std::string KeyOf(const Component& component)
{
    std::string key = component.name;
    key.push_back('\0');
    AppendBytes(key, reinterpret_cast<std::uintptr_t>(component.mesh.get()));
    for (const Use& use : component.uses) {
        key.append(use.id).push_back('/');
        AppendBytes(key, use.component);
        AppendBytes(key, use.location);
    }
    return key;
}

/// The number that somebody wrote who meant 0.002, not the value of single precision next to it.
double AsWritten(float value)
{
    std::array<char, 32> digits;
    double written = value;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    std::from_chars(digits.data(), end.ptr, written);
    return written;
}

class HierarchyMaker
{
public:
    HierarchyMaker(const aiScene& scene, const Settings& settings, double scale, ProductModel& model,
                   std::string& problem)
        : m_scene(scene), m_settings(settings), m_scale(scale), m_meshMaker(scene, settings, scale),
          m_components(model.components), m_problem(problem)
    {
    }

    /// @param rootPlace of the root node
    bool Run(const aiMatrix4x4& rootPlace)
    {
        std::vector<Step> due;
        due.emplace_back(*m_scene.mRootNode);
        while (due.size() > 1 || due.back().next < due.back().node->mNumChildren) {
            Step& step = due.back();
            if (step.next < step.node->mNumChildren) {
                const aiNode* const child = step.node->mChildren[step.next++];
                if (child) {
                    due.emplace_back(*child);
                }
                continue;
            }
            std::size_t component = 0;
            if (!Finish(step, component)) {
                return false;
            }
            const aiNode& node = *step.node;
            due.pop_back();
            if (component != kNothing && !AddUse(due.back(), node, component, node.mTransformation)) {
                return false;
            }
        }
        return FinishRoot(due.back(), rootPlace);
    }

private:
    static constexpr std::size_t kNothing = static_cast<std::size_t>(-1);

    struct Step {
        explicit Step(const aiNode& ofNode) : node(&ofNode) {}
        const aiNode* node;
        unsigned int next = 0;
        Component component;
        IdMaker ids;
    };

    /// What the file calls a node or a mesh.
    std::string NameIn(const aiString& text) const
    {
        const auto given = m_settings.names.find(TextOf(text));
        return NameOf(given == m_settings.names.end() ? TextOf(text) : given->second);
    }

    /// @param[out] number kNothing when there is nothing to be seen in it
    bool Finish(Step& step, std::size_t& number)
    {
        Component& component = step.component;
        std::string meshName;
        if (!FindMesh(*step.node, component.mesh, meshName)) {
            return false;
        }
        number = kNothing;
        if (!component.mesh && component.uses.empty()) {
            return true;
        }
        const std::string nodeName = WithoutNumber(NameIn(step.node->mName));
        component.name = component.mesh && component.uses.empty() && !meshName.empty() ? meshName : nodeName;
        const auto [place, isNew] = m_numbers.try_emplace(KeyOf(component), m_components.size());
        number = place->second;
        if (isNew) {
            m_components.push_back(std::move(component));
        }
        return true;
    }

    bool FindMesh(const aiNode& node, du::SmartPtr<luk::Mesh>& mesh, std::string& name)
    {
        const std::vector<unsigned int> numbers(node.mMeshes, node.mMeshes + node.mNumMeshes);
        if (numbers.empty()) {
            return true;
        }
        if (*std::max_element(numbers.begin(), numbers.end()) >= m_scene.mNumMeshes) {
            return Fail(m_problem, "the node \"" + NameOf(node.mName) + "\" shows a mesh that is not there");
        }
        const std::string read = NameIn(m_scene.mMeshes[numbers.front()]->mName);
        name = numbers.size() > 1 ? WithoutNumber(read) : read;
        const auto found = m_meshes.find(numbers);
        if (found != m_meshes.end()) {
            mesh = found->second;
            return true;
        }
        return m_meshMaker.Make(numbers, mesh, m_problem) && m_meshes.emplace(numbers, mesh).second;
    }

    bool AddUse(Step& step, const aiNode& node, std::size_t component, const aiMatrix4x4& place)
    {
        const std::string name = NameIn(node.mName);
        Use use;
        use.component = component;
        use.id = step.ids.Make(name.empty() ? m_components[component].name : name);
        if (!FindLocation(place, use.location)) {
            m_problem = "the placement of \"" + use.id + "\" is not sound: " + m_problem;
            return false;
        }
        step.component.uses.push_back(std::move(use));
        return ++m_uses <= m_settings.maximumUses ||
               Fail(m_problem, "there are more than " + std::to_string(m_settings.maximumUses) + " parts");
    }

    bool FindLocation(const aiMatrix4x4& m, dg::Location& location)
    {
        if (m.d1 != 0.0F || m.d2 != 0.0F || m.d3 != 0.0F || m.d4 != 1.0F) {
            return Fail(m_problem, "its matrix has a perspective, or is no number");
        }
        location =
            dg::Location(dg::FMat33(m.a1, m.a2, m.a3, m.b1, m.b2, m.b3, m.c1, m.c2, m.c3),
                         dg::DPoint3D(m_scale * AsWritten(m.a4), m_scale * AsWritten(m.b4), m_scale * AsWritten(m.c4)));
        return CheckProductLocation(location, m_problem);
    }

    /// Whether an importer has given the root this name.
    static bool IsMadeUp(const std::string& name)
    {
        return name.empty() || name == "ROOT" || name == "3MF" || name.starts_with("model.");
    }

    /// The root of the product is nowhere and has no mesh. A root node that is more becomes its only part.
    bool FinishRoot(Step& step, const aiMatrix4x4& place)
    {
        const std::string name = NameOf(step.node->mName);
        if (step.node->mNumMeshes == 0 && place.IsIdentity()) {
            step.component.name = IsMadeUp(name) ? m_settings.name : name;
            m_components.push_back(std::move(step.component));
        } else {
            std::size_t component = 0;
            Step root(*step.node);
            if (!Finish(step, component) || (component != kNothing && !AddUse(root, *step.node, component, place))) {
                return false;
            }
            root.component.name = m_settings.name;
            m_components.push_back(std::move(root.component));
        }
        return !m_components.back().uses.empty() || Fail(m_problem, "there is no surface in it");
    }

    const aiScene& m_scene;
    const Settings& m_settings;
    const double m_scale;
    MeshMaker m_meshMaker;
    std::vector<Component>& m_components;
    std::string& m_problem;
    std::map<std::vector<unsigned int>, du::SmartPtr<luk::Mesh>> m_meshes;
    std::unordered_map<std::string, std::size_t> m_numbers;
    std::size_t m_uses = 0;
};

/// Takes a scale that is the same along all axes out of a matrix.
double TakeScale(aiMatrix4x4& m)
{
    const auto length = [](float x, float y, float z) { return std::hypot(double{x}, double{y}, double{z}); };
    const double x = length(m.a1, m.b1, m.c1);
    const double y = length(m.a2, m.b2, m.c2);
    const double z = length(m.a3, m.b3, m.c3);
    const bool isEven = std::abs(x - y) <= 1.0e-5 * x && std::abs(x - z) <= 1.0e-5 * x;
    if (!isEven || !(x > 0.0) || std::abs(x - 1.0) <= 1.0e-6) {
        return 1.0;
    }
    for (float* const entry : {&m.a1, &m.a2, &m.a3, &m.b1, &m.b2, &m.b3, &m.c1, &m.c2, &m.c3}) {
        *entry = static_cast<float>(*entry / x);
    }
    return AsWritten(static_cast<float>(x));
}

} // namespace

bool SceneConversion::Run(const aiScene& scene, const Settings& settings, ProductModel& model, std::string& problem)
{
    model.components.clear();
    if (!scene.mRootNode) {
        return Fail(problem, "there is nothing in it");
    }
    aiMatrix4x4 rootPlace = scene.mRootNode->mTransformation;
    const double rootScale = TakeScale(rootPlace);
    const double scale = settings.millimetresPerUnit * (settings.isUnitOverridden ? 1.0 : rootScale);
    return HierarchyMaker(scene, settings, scale, model, problem).Run(rootPlace) && CheckProductModel(model, problem);
}

} // namespace luhost::io

#include "ProductStream.h"

#include <luhost/ProductMeshReader.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace luhost::io
{

namespace
{

constexpr std::string_view kMagic = "lusym product 1\n";
constexpr char kProblem = 'p';
constexpr char kModel = 'm';

template <class T>
void Put(std::string& out, T value)
{
    static_assert(std::is_trivially_copyable_v<T>);
    std::array<char, sizeof(T)> bytes;
    std::memcpy(bytes.data(), &value, sizeof(T));
    out.append(bytes.data(), bytes.size());
}

void PutCount(std::string& out, std::size_t count) { Put(out, static_cast<std::uint64_t>(count)); }

void PutText(std::string& out, std::string_view text)
{
    PutCount(out, text.size());
    out.append(text);
}

void PutUse(std::string& out, const ProductModel::Use& use)
{
    PutText(out, use.id);
    PutCount(out, use.component);
    Put(out, use.location.GetMat().GetEntries());
    const dg::DPoint3D& position = use.location.GetPosition();
    Put(out, std::array<double, 3>{position.x, position.y, position.z});
}

/// Takes values from the front; one that is not there makes all further ones be missing too.
class Taker
{
public:
    explicit Taker(std::string_view bytes) noexcept : m_rest(bytes) {}

    bool IsGood() const noexcept { return m_isGood; }
    bool IsAtEnd() const noexcept { return m_isGood && m_rest.empty(); }

    std::string_view TakeBytes(std::uint64_t size) noexcept
    {
        m_isGood = m_isGood && size <= m_rest.size();
        const std::string_view taken = m_rest.substr(0, m_isGood ? static_cast<std::size_t>(size) : 0);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

    template <class T>
    T Take() noexcept
    {
        T value{};
        const std::string_view bytes = TakeBytes(sizeof(T));
        if (m_isGood) {
            std::memcpy(&value, bytes.data(), sizeof(T));
        }
        return value;
    }

    std::string_view TakeText() noexcept { return TakeBytes(Take<std::uint64_t>()); }

    /// A count of things that have at least so many bytes each; 0 when they cannot all be there.
    std::size_t TakeCount(std::size_t bytesOfEach) noexcept
    {
        const auto count = Take<std::uint64_t>();
        m_isGood = m_isGood && count <= m_rest.size() / bytesOfEach;
        return m_isGood ? static_cast<std::size_t>(count) : 0;
    }

private:
    std::string_view m_rest;
    bool m_isGood = true;
};

constexpr std::size_t kLeastText = 8;
constexpr std::size_t kLeastComponent = kLeastText + 8 + 8;
constexpr std::size_t kLeastUse = kLeastText + 8 + 9 * sizeof(float) + 3 * sizeof(double);

ProductModel::Use TakeUse(Taker& taker)
{
    ProductModel::Use use;
    use.id = taker.TakeText();
    use.component = static_cast<std::size_t>(taker.Take<std::uint64_t>());
    const auto matrix = taker.Take<std::array<float, 9>>();
    const auto position = taker.Take<std::array<double, 3>>();
    use.location = dg::Location(dg::FMat33(matrix), dg::DPoint3D(position[0], position[1], position[2]));
    return use;
}

bool TakeMeshes(Taker& taker, std::vector<du::SmartPtr<luk::Mesh>>& meshes, std::string& problem)
{
    meshes.resize(taker.TakeCount(kLeastText));
    for (auto& mesh : meshes) {
        mesh = MeshFromPly(taker.TakeText(), problem);
        if (!mesh) {
            return false;
        }
    }
    return true;
}

bool TakeComponents(Taker& taker, const std::vector<du::SmartPtr<luk::Mesh>>& meshes, ProductModel& model)
{
    model.components.resize(taker.TakeCount(kLeastComponent));
    for (ProductModel::Component& component : model.components) {
        component.name = taker.TakeText();
        const auto mesh = taker.Take<std::uint64_t>();
        if (mesh > meshes.size()) {
            return false;
        }
        component.mesh = mesh == 0 ? nullptr : meshes[static_cast<std::size_t>(mesh - 1)];
        component.uses.reserve(taker.TakeCount(kLeastUse));
        for (std::size_t left = component.uses.capacity(); left > 0 && taker.IsGood(); --left) {
            component.uses.push_back(TakeUse(taker));
        }
    }
    return taker.IsAtEnd();
}

} // namespace

std::string ProductStream::FromModel(const ProductModel& model)
{
    std::unordered_map<const luk::Mesh*, std::size_t> numbers;
    std::string meshes;
    std::string components;
    for (const ProductModel::Component& component : model.components) {
        std::size_t number = 0;
        if (component.mesh) {
            const auto [place, isNew] = numbers.try_emplace(component.mesh.get(), numbers.size() + 1);
            number = place->second;
            if (isNew) {
                PutText(meshes, MeshToPly(*component.mesh));
            }
        }
        PutText(components, component.name);
        PutCount(components, number);
        PutCount(components, component.uses.size());
        for (const ProductModel::Use& use : component.uses) {
            PutUse(components, use);
        }
    }
    std::string out = std::string(kMagic).append(1, kModel);
    PutCount(out, numbers.size());
    out.append(meshes);
    PutCount(out, model.components.size());
    return out.append(components);
}

std::string ProductStream::FromProblem(std::string_view problem)
{
    std::string out = std::string(kMagic).append(1, kProblem);
    PutText(out, problem);
    return out;
}

bool ProductStream::Read(std::string_view bytes, ProductModel& model, std::string& problem)
{
    constexpr std::size_t kMaxProblemBytes = 500;
    model.components.clear();
    Taker taker(bytes);
    const bool isOurs = taker.TakeBytes(kMagic.size()) == kMagic;
    const char kind = taker.Take<char>();
    if (isOurs && kind == kProblem) {
        problem = taker.TakeText().substr(0, kMaxProblemBytes);
        return false;
    }
    std::vector<du::SmartPtr<luk::Mesh>> meshes;
    problem = "the reader has answered what is no product";
    if (!isOurs || kind != kModel || !TakeMeshes(taker, meshes, problem) || !TakeComponents(taker, meshes, model) ||
        !CheckProductModel(model, problem)) {
        model.components.clear();
        return false;
    }
    return true;
}

} // namespace luhost::io

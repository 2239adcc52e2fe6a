#pragma once

#include "annotations3d/ConnectedPartInfo.h"
#include "annotations3d/SymbolInfoBase.h"

#include <dg/Color.h>
#include <dg/DPoint3D.h>
#include <dg/Location.h>
#include <dg/Quaternion.h>
#include <du/SmartPtr.h>
#include <luk/illustration/SequencerTag.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace luannotations
{

/// Everything that a live 3D symbol is told in one step. A plain value.
struct LUSYMBOLS_API SymbolInfo : SymbolInfoBase {
    /// No entry of the library.
    static constexpr std::size_t kNoTemplate = std::numeric_limits<std::size_t>::max();

    SymbolInfo();
    SymbolInfo(const SymbolInfo&);
    SymbolInfo(SymbolInfo&&) noexcept;
    SymbolInfo& operator=(const SymbolInfo&);
    SymbolInfo& operator=(SymbolInfo&&) noexcept;
    ~SymbolInfo();

    dg::DPoint3D locPosition; ///< in the scene
    dg::Quaternion<float> locOrientation;
    double locScale = 1.0;
    dg::Location reservedLocation; ///< travels with the record and has no effect
    dg::Color emissive = dg::Color::BLACK;
    dg::Color specular = dg::Color::BLACK;
    dg::Color diffuse = dg::Color::BLACK;
    dg::Color ambient = dg::Color::BLACK;
    float shininess = 0.0F;
    float transparency = 0.0F;          ///< of the shape instance; taken over from saved content alone
    bool hasAppearanceOverride = false; ///< whether the colours and the shininess are to be applied
    bool isAnnotationSymbol = false;    ///< only such a symbol takes over connectedParts
    dg::Location symbolCsysLocation;
    bool hasSymbolCsysLocation = false;
    dg::Location symbolInitLocation;
    bool hasSymbolInitLocation = false;
    std::size_t templateIndex = kNoTemplate; ///< in the host's symbol template collection
    std::vector<du::SmartPtr<luk::illustration::SequencerTag>> sequencerTags;
    std::vector<ConnectedPartInfo> connectedParts;
};

} // namespace luannotations

// What a project outside this one does: it runs a session, loads the plug-in by name, reads a library and counts rows.

#include "catalog/PartslibraryUIData.h"

#include <luhost/PluginLibrary.h>
#include <luhost/Session.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    luhost::SessionConfig config;
    config.baseFolder = argv[2];
    luhost::Session session(config);
    std::string error;
    const auto plugin = luhost::PluginLibrary::Load(argv[1], error);
    if (!plugin) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    auto loader = du::DynamicCast<lukapp::illustration::SymbolTemplateLoader>(
        plugin->CreateComponent("load", "template", "symbol"));
    session.LoadLibrary(config.baseFolder + "/SymbolsLibrary/PartSymbolLibrary.xml", loader);
    lusymbols::PartslibraryUIData rows("ol_", "img_");
    return rows.Refresh(luk::illustration::SymbolTemplateCollection::GetCollection()) > 0 ? 0 : 1;
}

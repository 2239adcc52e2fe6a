#include <luk/CurrentHandle.h>
#include <lukapp/LukApp.h>

namespace lukapp
{

LukApp::LukApp() : m_sceneManager(du::MakeCounted<SceneManager>()) {}
LukApp::~LukApp() = default;

du::SmartPtr<LukApp> LukApp::Get() { return luk::CurrentHandle<LukApp>::GetSlot().Get(); }

void LukApp::Set(const du::SmartPtr<LukApp>& app) { luk::CurrentHandle<LukApp>::GetSlot().Set(app); }

} // namespace lukapp

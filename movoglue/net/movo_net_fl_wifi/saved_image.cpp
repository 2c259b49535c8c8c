#include "movo_net_fl_wifi/saved.h"

#include "support/image.h"

namespace movonet {
namespace {
/** Every field at its offset; bytes between them are padding and zero. */
template <typename Image, typename Ess>
void walkFields(Image& image, Ess& ess)
{
    image.text(0, ess.essid);
    image.le(40, ess.bssid);
    image.le(48, ess.securityType);
    image.le(52, ess.encrypType);
    image.text(56, ess.Key);
    image.le(124, ess.signalVal);
    image.le(128, ess.frequency);
    image.le(132, ess.isSaved);
    image.le(136, ess.priority);
    image.le(140, ess.isConnected);
    image.le(141, ess.bWPS);
}
} // namespace

void encodeEss(const MovNetWifiEssItem_t& from, EssRecord& to)
{
    to = {};
    ImageWriter image(to);
    walkFields(image, from);
}

void decodeEss(const EssRecord& from, MovNetWifiEssItem_t& to)
{
    to = {};
    ImageReader image(from);
    walkFields(image, to);
}
} // namespace movonet

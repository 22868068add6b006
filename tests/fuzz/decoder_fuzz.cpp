// SPDX-License-Identifier: GPL-3.0-or-later
// Fuzz target for everything that reads bytes from the air: the element walk, the RSN/WPA
// suites, the link-layer headers and the management frame header. Built with libFuzzer by
// ./fuzz, and fed the saved corpus by an ordinary test.
#include "wireless/capture/LinkLayer.h"
#include "wireless/capture/ManagementFrame.h"
#include "wireless/ie/BssNetworkMapper.h"
#include "wireless/ie/ElementDecoder.h"

#include <cstddef>
#include <cstdint>

namespace {
void mapAll(const BssElements &elements, const BssObservation &observation)
{
    const CWNetwork::Data d = BssNetworkMapper::networkData(elements, observation);
    // Touch the SSID the way the display does; hostile bytes must decode safely.
    (void)CWNetwork(d).ssid();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // The whole input as the elements of a BSS.
    BssObservation observation;
    if (size >= 4) {
        observation.capability = static_cast<std::uint16_t>(data[0] | (data[1] << 8));
        observation.frequencyMHz = 2400 + (data[2] | (data[3] << 8)) % 5000;
    }
    mapAll(ElementDecoder::decode(data, size), observation);

    // The first byte picks a link type, the rest is a captured packet.
    if (size < 1)
        return 0;
    static constexpr int kTypes[] = {LinkLayer::kPlain80211, LinkLayer::kRadiotap,
                                     LinkLayer::kPrism, LinkLayer::kAvs, LinkLayer::kPpi};
    const int linkType = kTypes[data[0] % 5];
    const auto frame = LinkLayer::strip(linkType, data + 1, size - 1);
    if (!frame)
        return 0;
    const auto mgmt = ManagementFrame::parse(frame->data, frame->length);
    if (!mgmt)
        return 0;
    observation.bssid = mgmt->bssid;
    observation.capability = mgmt->capability;
    observation.frequencyMHz = frame->frequencyMHz;
    mapAll(ElementDecoder::decode(mgmt->elements, mgmt->elementsLength), observation);
    return 0;
}

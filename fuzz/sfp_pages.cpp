// Pages of SFP modules that hold anything: as iodbg takes them apart, and as a virtual module
// measures with them.

#include "fuzz/input.h"
#include "iodbg/transceivers/diagnostics.h"
#include "iodbg/transceivers/identification.h"
#include "virtual_board/devices/sfp_module.h"

#include <memory>

namespace {

/** Reports carry texts as they are, in JSON as well. */
void requirePrintable(const std::string &text) {
    for (const char character : text)
        fuzz::require(character >= ' ' && character <= '~', "a text that is not printable");
}

void judge(const uint8_t *id, const uint8_t *diagnostics) {
    // Exactly as long as the decoders may look.
    const iodbg::Bytes page(id, id + iodbg::kIdentificationSize);
    const iodbg::Identification module = iodbg::identificationOf(page);
    for (const std::string *text :
         {&module.kind, &module.connector, &module.encoding, &module.vendor, &module.oui,
          &module.partNumber, &module.revision, &module.serialNumber, &module.date})
        requirePrintable(*text);
    requirePrintable(iodbg::listed(module.compliances));
    requirePrintable(iodbg::listed(module.reaches));

    const iodbg::Bytes measured(diagnostics, diagnostics + iodbg::kDiagnosticsSize);
    for (const bool isExternal : {false, true})
        for (const iodbg::Measurement &value :
             iodbg::diagnosticsOf(measured, isExternal).measurements)
            requirePrintable(iodbg::dbmText(value.value));
}

void useModule(fuzz::Input &input) {
    static const auto module = std::make_unique<vb::SfpModule>();
    *module = {};
    const auto kind = static_cast<vb::SfpKind>(input.below(vb::kSfpKinds));
    vb::sfpPlug(*module, kind, input.number<uint32_t>(), 0);
    if (input.below(2) == 0)
        input.fill(module->id, sizeof(module->id));
    if (input.below(2) == 0)
        input.fill(module->diagnostics, sizeof(module->diagnostics));
    module->isLinkUp = input.below(2);
    module->microwatts = input.below(vb::kSfpMostMicrowatts + 1);
    const vb::SfpCage cage = {input.number<int32_t>() % 200000000, input.below(2) == 0,
                              vb::kSfpSlowStartNs * 2};
    for (const uint32_t device :
         {vb::kSfpIdAddr, vb::kSfpDiagnosticsAddr, vb::kSfpPhyAddr, 0x57u}) {
        uint8_t data[vb::kSfpPageSize] = {};
        const uint32_t offset = input.quantity();
        const uint32_t length = 1 + input.below(sizeof(data));
        vb::sfpWrite(*module, cage, device, offset, data, length);
        vb::sfpRead(*module, cage, device, offset, data, length);
    }
    uint8_t page[vb::kSfpPageSize];
    vb::sfpMeasure(*module, cage, page);
    judge(module->id, page);
    fuzz::require(vb::sfpIsConsistent(*module), "a module that cannot be");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    uint8_t id[iodbg::kIdentificationSize];
    uint8_t diagnostics[iodbg::kDiagnosticsSize];
    input.fill(id, sizeof(id));
    input.fill(diagnostics, sizeof(diagnostics));
    judge(id, diagnostics);
    useModule(input);
    return 0;
}

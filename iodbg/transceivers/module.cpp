#include "iodbg/transceivers/module.h"

#include "bsp.h"
#include "iodbg/transceivers/cage.h"

namespace iodbg {

Module readModule(uint32_t port) {
    Module module = {};
    Bytes page;
    module.status = readSfpPage(port, BSP_SFP_IDENTIFICATION, kIdentificationSize, page);
    if (module.status != BSP_OK)
        return module;
    module.identification = identificationOf(page);
    if (!module.identification.hasDiagnostics)
        return module;
    module.diagnosticsStatus = readSfpPage(port, BSP_SFP_DIAGNOSTICS, kDiagnosticsSize, page);
    if (module.diagnosticsStatus == BSP_OK)
        module.diagnostics = diagnosticsOf(page, module.identification.isExternallyCalibrated);
    return module;
}

} // namespace iodbg

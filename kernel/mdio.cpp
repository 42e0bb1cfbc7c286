// MDIO registers of the PHYs: one command register of the switch controller, which is mapped for
// each command. The kernel module has no part in it.

#include "bsp.h"
#include "support/board_map.h"
#include "support/owned.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr char kMemoryPath[] = "/dev/mem";
constexpr size_t kPageSize = 4096;

// The command register.
constexpr uint32_t kBusy = 1u << 0; // set by us, cleared by the hardware
constexpr uint32_t kWrite = 1u << 1;
constexpr uint32_t kAddressMask = BSP_MDIO_ADDRESS_MAX;
constexpr unsigned kAddressAShift = 2;
constexpr unsigned kAddressBShift = 7;
constexpr uint32_t kDataMask = BSP_MDIO_VALUE_MAX;
constexpr unsigned kDataShift = 12;
constexpr uint32_t kError = 1u << 28;

constexpr int kMaxPolls = 19001;
constexpr useconds_t kPollPause = 1;

/** The switch controller's registers in memory, read and written by the hardware as well. */
class RegisterPage {
  public:
    explicit RegisterPage(int memory)
        : page_(mmap(nullptr, kPageSize, PROT_READ | PROT_WRITE, MAP_SHARED, memory,
                     bsp::kMdioPageAddress)) {}
    RegisterPage(const RegisterPage &) = delete;
    RegisterPage &operator=(const RegisterPage &) = delete;
    ~RegisterPage() {
        if (isMapped())
            munmap(page_, kPageSize);
    }

    bool isMapped() const { return page_ != MAP_FAILED; }
    volatile uint32_t &command() const {
        return static_cast<volatile uint32_t *>(page_)[bsp::kMdioCommand / sizeof(uint32_t)];
    }

  private:
    void *page_;
};

constexpr uint32_t addressed(uint32_t addrA, uint32_t addrB) {
    return (addrA & kAddressMask) << kAddressAShift | (addrB & kAddressMask) << kAddressBShift;
}

/** Polls until the command is done; *word is what the register held last. */
int32_t waitUntilDone(const volatile uint32_t &command, uint32_t *word) {
    for (int polls = 0; polls < kMaxPolls; ++polls) {
        *word = command;
        if ((*word & kError) != 0)
            return BSP_E_FAILED;
        if ((*word & kBusy) == 0)
            return BSP_OK;
        usleep(kPollPause);
    }
    return BSP_E_TIMEOUT;
}

/** Says why a command failed, as long as its page is there. */
using Complaint = void (*)(int32_t status);

void complainOfRead(int32_t status) {
    if (status == BSP_E_FAILED)
        std::printf("bsp_smi_read: read failed \n");
    if (status == BSP_E_TIMEOUT)
        std::printf("bsp_smi_read: read timeout \n");
}

void complainOfWrite(int32_t status) {
    if (status == BSP_E_TIMEOUT)
        std::printf("bsp_smi_write: write timeout \n");
}

/** Runs a command; *word is then the register with its answer. */
int32_t run(uint32_t command, Complaint complain, uint32_t *word) {
    const bsp::Descriptor memory(open(kMemoryPath, O_RDWR | O_CLOEXEC));
    if (!memory.isOpen()) {
        std::printf("Can't open %s \n", kMemoryPath);
        return BSP_E_OPEN;
    }
    const RegisterPage page(memory.get());
    if (!page.isMapped()) {
        std::printf("Can't map physical memory: 0x%lx\n",
                    static_cast<unsigned long>(bsp::kMdioPageAddress));
        return BSP_E_MAP;
    }
    page.command() = command | kBusy;
    const int32_t status = waitUntilDone(page.command(), word);
    complain(status);
    return status;
}

} // namespace

int32_t bsp_smi_read(uint32_t, uint32_t addrA, uint32_t, uint32_t addrB, uint32_t *value) {
    if (value == nullptr)
        return BSP_E_NULL;
    uint32_t word = 0;
    const int32_t status = run(addressed(addrA, addrB), complainOfRead, &word);
    if (status != BSP_OK)
        return status;
    *value = word >> kDataShift & kDataMask;
    return BSP_OK;
}

int32_t bsp_smi_write(uint32_t, uint32_t addrA, uint32_t, uint32_t addrB, uint32_t data) {
    uint32_t word = 0;
    return run(addressed(addrA, addrB) | kWrite | (data & kDataMask) << kDataShift, complainOfWrite,
               &word);
}

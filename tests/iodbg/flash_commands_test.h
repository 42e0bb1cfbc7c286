#pragma once
// A test of commands that work on flash: its partitions as the board has them.

#include "tests/iodbg/iodbg_test.h"
#include "virtual_board/words/fault_text.h"

class FlashCommandsTest : public IodbgTest {
  protected:
    static constexpr uint32_t kBank = 12;
    static constexpr uint32_t kBankBlock = 131072;
    static constexpr uint32_t kPage = 2048;
    static constexpr uint32_t kHeaderPlace = 0x2700000;
    static constexpr uint32_t kLargestImage = 0x2700000;

    vb::Flash &flash(uint32_t number) const { return devices().flash[vb::flashIndex(number)]; }
    void markBad(uint32_t number, uint32_t block) const { flash(number).isBad[block] = 1; }

    void spoil(const std::string &device, const std::string &op, const std::string &effect,
               const std::string &offset = "", const std::string &nth = "1",
               const std::string &when = "from") {
        addFault(vb::parseFault({device, op, offset, nth, when, effect}));
    }

    /** What a partition holds at a place. */
    std::string stored(uint32_t number, uint32_t offset, size_t length) const;
    /** Programs bytes as a programming station does. */
    void store(uint32_t number, uint32_t offset, const std::string &bytes) const;

    /** Expects a command to refuse kUnreadable, a file that its user may not read. */
    void expectUnreadable(const Words &arguments);
    static constexpr char kUnreadable[] = "/tmp/bsp/unreadable";

    /** A file whose bytes tell their place; its last 512 bytes are a header block's. */
    std::string makeImage(size_t size, const std::string &name = "os.img") const;
    static std::string imageBytes(size_t size);
};

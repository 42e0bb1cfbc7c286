// Every exported function with any arguments that a caller may give it, over a system that answers
// as it likes. A new function of the library is called as its parameters tell.

#include "bsp.h"
#include "fuzz/hostile_system.h"
#include "fuzz/models.h"
#include "language/formats/product_record.h"

#include <iterator>
#include <memory>
#include <tuple>

namespace {

using fuzz::Input;

/** What has more than one element, by the function's name behind "bsp" or "io". */
struct Room {
    const char *function;
    size_t size;
};
constexpr Room kRooms[] = {
    {"HwVersionGet", BSP_HW_VERSION_SIZE},
    {"CpldVersionGet", BSP_CPLD_VERSION_SIZE},
    {"FpgaVersionGet", BSP_FPGA_VERSION_SIZE},
    {"UbootVersionGet", BSP_BOOT_VERSION_LENGTH},
    {"BiosVersionGet", BSP_BOOT_VERSION_LENGTH},
    {"SerialNumGet", BSP_SERIAL_NUMBER_BUFFER},
    {"BootPwdGet", BSP_BOOT_PASSWORD_BUFFER},
    {"PoeAppVersionGet", BSP_POE_APP_VERSION_SIZE},
    {"PoeRtl8239AppVersionGet", BSP_POE_APP_VERSION_SIZE},
    {"SerialNumSet", BSP_SERIAL_NUMBER_MAX},
    {"MacAddrGet", BSP_MAC_LENGTH},
    {"MacAddrSet", BSP_MAC_LENGTH},
    {"OsImageInfoGet", BSP_OS_HEADER_SIZE},
    {"LaserBasicGet", 1},
    {"LaserAdvanceGet", 1},
    {"LaserQsfpGet", 1},
    {"_rtc_chip_get", 1},
    {"CpldUpgrade_handle", 40}, // the block that tells how the CPLD is programmed
};

/** Those that trust a pointer to be none that is null, as bsp.h says of each. */
constexpr const char *kTrusting[] = {
    "DevIdGet",    "PowerNumGet",     "PowerPresentGet", "PowerStatusGet", "PowerInfoGet",
    "RealtimeSet", "LaserPresentGet", "LaserControlGet", "LaserRxLosGet",  "LaserTxfaultGet",
};

/** A function to be called, and what is odd about the call. */
struct Called {
    const char *name;
    uint32_t nullPointer; // counted from 1; 0: none
    bool hasEmptyBuffers;

    /** The name behind "bsp" or "io". */
    const char *stem() const { return name + (std::strncmp(name, "bsp", 3) == 0 ? 3 : 2); }
    bool is(const char *function) const { return std::strcmp(stem(), function) == 0; }

    size_t room() const {
        for (const Room &some : kRooms)
            if (is(some.function))
                return some.size;
        return 0;
    }
    /** Whether its n-th pointer is null. */
    bool isNull(uint32_t pointer) const {
        return pointer == nullPointer &&
               std::none_of(std::begin(kTrusting), std::end(kTrusting),
                            [this](const char *function) { return is(function); });
    }
};

/** Memory that is exactly as large as a caller must give. */
class Memory {
  public:
    Memory(Input &input, size_t size) : bytes_(std::malloc(size)) {
        input.fill(bytes_.get(), size);
    }
    explicit Memory(const std::string &text) : bytes_(std::malloc(text.size() + 1)) {
        std::memcpy(bytes_.get(), text.c_str(), text.size() + 1);
    }
    template <typename Pointer>
    Pointer as() const {
        return static_cast<Pointer>(bytes_.get());
    }

  private:
    struct Free {
        void operator()(void *bytes) const { std::free(bytes); }
    };
    std::unique_ptr<void, Free> bytes_;
};

/** The arguments of one call. Bytes in front of a number are as many as it says. */
class Arguments {
  public:
    Arguments(Input &input, const Called &called)
        : input_(input), called_(called), room_(called.room()) {}

    template <typename Type>
    Type next() {
        if constexpr (std::is_integral_v<Type>)
            return number<Type>();
        else
            return pointerOrNull<Type>();
    }

  private:
    template <typename Type>
    Type number() {
        if (isLengthNext_) {
            isLengthNext_ = false;
            return static_cast<Type>(length_);
        }
        return static_cast<Type>(input_.quantity());
    }

    /** Null instead of a pointer to as much as there would be. */
    template <typename Type>
    Type pointerOrNull() {
        const Type made = pointer<Type>();
        return called_.isNull(++pointers_) ? nullptr : made;
    }

    template <typename Type>
    Type pointer() {
        using Target = std::remove_cv_t<std::remove_pointer_t<Type>>;
        constexpr bool isConst = std::is_const_v<std::remove_pointer_t<Type>>;
        isLengthNext_ = false;
        if constexpr (std::is_same_v<Target, char> && isConst)
            return text();
        else if constexpr (isByte<Target>)
            return bytes<Type>();
        else
            return memory<Type>(sizeof(Target));
    }

    template <typename Target>
    static constexpr bool isByte =
        std::is_void_v<Target> || std::is_same_v<Target, uint8_t> || std::is_same_v<Target, char>;

    template <typename Type>
    Type memory(size_t size) {
        memory_.emplace_back(input_, size);
        return memory_.back().template as<Type>();
    }

    template <typename Type>
    Type bytes() {
        hasBytes_ = true;
        if (room_ != 0)
            return memory<Type>(room_);
        isLengthNext_ = true;
        length_ = 1 + input_.quantity() % 1100;
        if (called_.hasEmptyBuffers)
            length_ = 0;
        return memory<Type>(length_);
    }

    /** A path or another text. */
    const char *text() {
        static constexpr const char *kPaths[] = {BSP_MTD_BOOT_LOADER, BSP_MTD_OS_BANK_1,
                                                 "/tmp/image", "a'b; c d"};
        constexpr size_t kLongest = 300;
        if (room_ != 0 && !hasBytes_) // else it is the room of the bytes before
            return memory<const char *>(room_);
        const uint8_t way = input_.byte() % 8;
        std::string text = way < std::size(kPaths) ? kPaths[way] : input_.line();
        text.resize(std::min(std::strlen(text.c_str()), kLongest));
        memory_.emplace_back(text);
        return memory_.back().as<const char *>();
    }

    Input &input_;
    const Called &called_;
    size_t room_;
    size_t length_ = 0;
    uint32_t pointers_ = 0;
    bool hasBytes_ = false;
    bool isLengthNext_ = false;
    std::vector<Memory> memory_;
};

/** Words of a command line. */
class Words {
  public:
    explicit Words(Input &input) {
        const uint32_t count = input.below(24); // more than a frame has bytes
        for (uint32_t i = 0; i < count; ++i) {
            const uint32_t way = input.below(4);
            words_.push_back(way == 0 ? "poeCommand" : std::string("4b", way % 3));
        }
        for (std::string &word : words_)
            pointers_.push_back(word.data());
        pointers_.push_back(nullptr);
    }
    int32_t count() const { return static_cast<int32_t>(words_.size()); }
    char **get() { return pointers_.data(); }

  private:
    std::vector<std::string> words_;
    std::vector<char *> pointers_;
};

template <typename Result, typename... Parameters>
void call(Result (*function)(Parameters...), const Called &called, hostile::System &system) {
    Arguments arguments(system.answers, called);
    // An SPI transfer travels as an I2C transfer does, with numbers in the places of addresses.
    system.isMemoryValid = !called.is("SpiXfer_handle");
    // In braces arguments are made in order.
    std::apply(function, std::tuple<Parameters...>{arguments.next<Parameters>()...});
    system.isMemoryValid = true;
}

// Those whose arguments belong together in other ways

template <typename Number>
void call(int32_t (*function)(Number, int32_t, char **), const Called &called,
          hostile::System &system) {
    const auto number = static_cast<Number>(system.answers.quantity());
    Words words(system.answers);
    function(number, words.count(), called.isNull(1) ? nullptr : words.get());
}

/** The argument of an operation is what it needs: a number, an output, a text or words. */
void call(int32_t (*function)(const uint32_t *, uint32_t, void *), const Called &called,
          hostile::System &system) {
    Words words(system.answers);
    const uint32_t operation = system.answers.quantity();
    if (operation == BSP_POE_DEBUG_DISPATCH) {
        const auto count = static_cast<uint32_t>(words.count());
        function(called.isNull(1) ? nullptr : &count, operation,
                 called.isNull(2) ? nullptr : words.get());
        return;
    }
    const uint32_t port = system.answers.quantity();
    const Memory argument(system.answers, 64);
    argument.as<char *>()[63] = '\0';
    function(system.answers.below(4) == 0 ? nullptr : &port, operation,
             called.isNull(2) ? nullptr : argument.as<void *>());
}

/** A record of the caller's own. Its addresses are for the driver to judge. */
void call(int32_t (*function)(uint32_t, BspIoctlRecord *), const Called &called,
          hostile::System &system) {
    const Memory record(system.answers, sizeof(BspIoctlRecord));
    system.isMemoryValid = false;
    function(BSP_REQ_CPLD_READ + system.answers.quantity(),
             called.isNull(1) ? nullptr : record.as<BspIoctlRecord *>());
    system.isMemoryValid = true;
}

/** Data. */
void call(const BspPoeDriver *, const Called &, hostile::System &) {}

struct Function {
    const char *name;
    void (*call)(const Called &called, hostile::System &system);
};
#define FUZZ_EXPORT(name)                                                                          \
    {#name, [](const Called &called, hostile::System &system) { call(&name, called, system); }},
constexpr Function kFunctions[] = {
#include FUZZ_EXPORTS
};

/** An EEPROM whose record is valid, so that calls get behind it. */
hostile::Bytes eepromWithRecord() {
    hostile::Bytes eeprom(BSP_EEPROM_SIZE, 1);
    uint8_t *record = eeprom.data() + BSP_DEVINFO_OFFSET;
    std::memcpy(record, formats::kBoardRecordMagic, sizeof(formats::kBoardRecordMagic));
    formats::renewRecordCrc(record);
    return eeprom;
}

/**
 * Every function on each model with each of its pointers null, and with empty buffers: of nulls the
 * fuzzer finds few at a time.
 */
void callWithNothing() {
    constexpr uint32_t kMostPointers = 7; // of a function
    const std::vector<uint8_t> ones(64, 1);
    const hostile::Bytes eeprom = eepromWithRecord();
    for (const uint32_t devId : allIds()) {
        for (const Function &function : kFunctions) {
            for (uint32_t pointer = 0; pointer <= kMostPointers; ++pointer) {
                Input input(ones.data(), ones.size());
                hostile::System system(input);
                system.devId = devId;
                system.eeprom = eeprom;
                function.call({function.name, pointer, pointer == 0}, system);
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    constexpr int kMostCalls = 8;
    // Of functions: so mostly the same when others come behind them.
    constexpr uint32_t kNumbers = 512;
    if (size == 0) { // of which each run has one
        callWithNothing();
        return 0;
    }
    Input input(bytes, size);
    hostile::System system(input);
    system.devId = fuzz::anyModel(input);
    system.firstDescriptor = input.below(4) == 3 ? 0 : 3;
    for (int i = 0; i < kMostCalls && !input.isEmpty(); ++i) {
        const uint32_t choice = input.number<uint16_t>();
        const uint32_t oddity = choice / kNumbers;
        const Function &function = kFunctions[choice % kNumbers % std::size(kFunctions)];
        function.call({function.name, oddity % 16, oddity / 16 == 7}, system);
    }
    return 0;
}

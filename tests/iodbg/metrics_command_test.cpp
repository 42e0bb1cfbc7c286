// iodbg metrics.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/world.h"

#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <sys/stat.h>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class MetricsTest : public IodbgTest {
  protected:
    /** The text that a call answers; its exit code must be this one. */
    std::string metrics(int exitCode = 0) const {
        const ProcessResult result = iodbg({"metrics"});
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        return result.out;
    }
};

bool hasLine(const std::string &text, const std::string &line) {
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

/** Expects a text to have samples, as whole lines. */
void expectLines(const std::string &text, const Words &lines) {
    for (const std::string &line : lines)
        EXPECT_TRUE(hasLine(text, line)) << line << "\nin:\n" << text;
}

/** Expects the form that both kinds of readers take. */
void expectWellFormed(const std::string &text) {
    const std::regex sample(
        R"(switch_[a-z_]+(\{[a-z_]+="[^"\\]*"(,[a-z_]+="[^"\\]*")*\})? -?\d+(\.\d+)?)");
    const std::regex head(R"(# (HELP|TYPE|UNIT) (switch_[a-z_]+) (.+))");
    ASSERT_TRUE(text.ends_with("\n# EOF\n"));
    std::set<std::string> samples, families;
    std::string family;
    std::istringstream lines(text.substr(0, text.size() - 6));
    for (std::string line; std::getline(lines, line);) {
        std::smatch found;
        if (!line.starts_with("#")) {
            EXPECT_TRUE(std::regex_match(line, sample)) << line;
            EXPECT_EQ(line.substr(0, line.find_first_of("{ ")), family);
            EXPECT_TRUE(samples.insert(line.substr(0, line.rfind(' '))).second) << line;
            continue;
        }
        ASSERT_TRUE(std::regex_match(line, found, head)) << line;
        if (found[1] == "HELP") {
            EXPECT_TRUE(families.insert(family = found[2]).second) << line;
        }
        EXPECT_EQ(found[2], family);
    }
}

TEST_F(MetricsTest, TellsAllReadingsInBaseUnits) {
    world::set("sfp.49.module", "sr");
    world::set("sfp.49.rx-power", "420");
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    world::set("poe.3.device", "class=4 requests=25500 draws=18000");
    const std::string text = metrics();
    expectWellFormed(text);
    expectLines(
        text,
        {"# HELP switch_temperature_celsius Temperature of the board.",
         "# TYPE switch_temperature_celsius gauge",
         "# UNIT switch_temperature_celsius celsius",
         "switch_info{device_id=\"0x0709\",device_serial_version=\"0x09\",hardware_version=\"A.3\","
         "cpld_version=\"V1.2\",fpga_version=\"---\",boot_loader_version=\"1.2.3\","
         "serial_number=\"VB00000001\",base_mac=\"02:00:5E:10:00:00\","
         "board_mac=\"02:00:5E:10:00:01\"} 1",
         "switch_software_info{iodbg=\"" BSP_TEST_VERSION "\",library=\"" BSP_TEST_VERSION "\"} 1",
         "switch_readings_failed 0",
         "switch_findings{severity=\"fault\"} 0",
         "switch_verdict{unit=\"temperature\",index=\"\"} 0",
         "switch_finding{code=\"bank-empty\",severity=\"warning\",unit=\"bank\",index=\"0\"} 1",
         "switch_record_crc_valid 1",
         "switch_temperature_limit_celsius{code=\"temperature-hot\"} 75",
         "switch_fan_level 1",
         "switch_fan_present{fan=\"1\"} 1",
         "switch_fan_speed_rpm{fan=\"2\"} 2400",
         "switch_clock_valid 1",
         "switch_watchdog_period 0",
         "switch_supply_plugged{supply=\"2\"} 1",
         "switch_supply_status{supply=\"1\"} 0",
         "switch_supply_output_volts{supply=\"1\"} 54",
         "switch_supply_output_watts{supply=\"1\"} 102.625",
         "switch_supply_temperature_celsius{supply=\"1\",sensor=\"1\"} 28",
         "switch_poe_controller_present 1",
         "switch_poe_initialised 1",
         "switch_poe_port_mode{port=\"3\",mode=\"auto\"} 1",
         "switch_poe_port_delivering{port=\"3\"} 1",
         "switch_poe_port_delivering{port=\"4\"} 0",
         "switch_poe_port_class{port=\"3\"} 4",
         "switch_poe_port_watts{port=\"3\"} 18",
         "switch_poe_port_limit_watts{port=\"48\"} 90",
         "switch_sfp_present{port=\"49\"} 1",
         "switch_sfp_present{port=\"50\"} 0",
         "switch_sfp_module_info{port=\"49\",compliance=\"10GBASE-SR\",vendor=\"VIRTUAL\","
         "part_number=\"VIRTUAL-SR\"} 1",
         "switch_sfp_received_watts{port=\"49\"} 0.00042",
         "switch_flash_bad_blocks{device=\"/dev/mtd12\"} 0"});
    // It wavers as a measurement does.
    EXPECT_NE(text.find("switch_poe_port_amperes{port=\"3\"} 0.33"), std::string::npos);
    // What nobody has measured has no value.
    EXPECT_EQ(text.find("switch_poe_port_watts{port=\"4\"}"), std::string::npos);
    EXPECT_EQ(text.find("switch_sfp_module_info{port=\"50\""), std::string::npos);
}

TEST_F(MetricsTest, TellsWhatCheckFinds) {
    world::set("fan.2.state", "stuck");
    ::sleep(10); // on the board
    const std::string text = metrics();
    expectWellFormed(text);
    expectLines(text, {"switch_fan_speed_rpm{fan=\"2\"} 0",
                       "switch_finding{code=\"fan-stands-still\",severity=\"fault\",unit=\"fan\","
                       "index=\"2\"} 1",
                       "switch_verdict{unit=\"fan\",index=\"2\"} 3"});
}

TEST_F(MetricsTest, CountsWhatIsFoundMoreThanOnce) {
    world::set("sfp.49.module", "sr");
    world::set("sfp.49.rx-power", "500");
    uint8_t *page = devices().sfp[48].diagnostics;
    page[0] = page[1] = 0; // the highest temperature
    page[8] = page[9] = 0; // the highest voltage
    const std::string text = metrics();
    expectWellFormed(text);
    expectLines(text, {"switch_finding{code=\"sfp-alarm\",severity=\"fault\",unit=\"sfp-port\","
                       "index=\"49\"} 2",
                       "switch_sfp_beyond_limit{port=\"49\",quantity=\"temperature\","
                       "judgement=\"high alarm\"} 1",
                       "switch_sfp_beyond_limit{port=\"49\",quantity=\"supply_voltage\","
                       "judgement=\"high alarm\"} 1"});
}

TEST_F(MetricsTest, LeavesOutWhatFailsAndSaysSo) {
    addFault(silence(FaultDevice::I2c, FaultOp::Any));
    const std::string path = hostFile("switch.prom");
    const ProcessResult result = iodbg({"metrics", path});
    EXPECT_EQ(result.exitCode, 1);
    const std::string text = readFile(path);
    expectWellFormed(text);
    EXPECT_EQ(text.find("switch_temperature_celsius"), std::string::npos);
    expectLines(text, {"switch_fan_present{fan=\"1\"} 1",
                       "switch_finding{code=\"i2c-bus-no-answer\",severity=\"fault\",unit=\"i2c-"
                       "bus\",index=\"0\"} 1"});
    EXPECT_NE(text.find("switch_reading_failed{item=\"climate.temperature_c\",status=\""),
              std::string::npos);
    EXPECT_FALSE(hasLine(text, "switch_readings_failed 0"));
}

TEST_F(MetricsTest, AsksASilentCpldForNoModel) {
    addFault(silence(FaultDevice::Cpld, FaultOp::Any));
    const std::string text = metrics();
    expectWellFormed(text);
    expectLines(text, {"switch_finding{code=\"cpld-no-answer\",severity=\"fault\",unit=\"cpld\","
                       "index=\"\"} 1",
                       "switch_temperature_celsius 40"});
    for (const char *wild : {"switch_info{", "switch_fan_level", "switch_watchdog_period"})
        EXPECT_EQ(text.find(wild), std::string::npos) << wild;
}

TEST_F(MetricsTest, WritesWholeFilesForAll) {
    const std::string folder = hostFile("collector");
    std::filesystem::create_directory(folder);
    const std::string path = folder + "/switch.prom";
    const mode_t before = umask(0077);
    for (int i = 0; i < 2; ++i) {
        const ProcessResult result = iodbg({"metrics", path});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_TRUE(result.out.starts_with("Saved in  " + path + "\nSamples   ")) << result.out;
    }
    umask(before);
    struct stat info = {};
    ASSERT_EQ(stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
    expectWellFormed(readFile(path));
}

TEST_F(MetricsTest, ReplacesNothingElseWithoutForce) {
    const std::string path = makeFile("notes", "mine");
    expectRefusal({"metrics", path}, 4,
                  path + " exists; choose another name, or replace it with "
                         "--force");
    EXPECT_EQ(iodbg({"metrics", path, "--force"}).exitCode, 0);
    expectWellFormed(readFile(path));
}

TEST_F(MetricsTest, AnswersInJsonWhereItHasSaved) {
    const std::string answer = json({"metrics", hostFile("switch.prom")});
    EXPECT_EQ(jsonKeys(answer, ""), (Words{"output", "samples", "failures"}));
    const ProcessResult both = iodbg({"metrics", "--json"});
    EXPECT_EQ(both.exitCode, 2);
    EXPECT_NE(both.out.find("cannot both go to standard output"), std::string::npos) << both.out;
}

} // namespace

#include "movo_net_fl_common/route.h"
#include "support/atomic.h"
#include "support/file.h"
#include "support/log.h"
#include "support/text.h"

#include <cerrno>
#include <cstring>
#include <string_view>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_common", &movoglue_net_debug};

constexpr const char* kResolverFile = "/etc/resolv.conf";
constexpr std::size_t kLineSize = 256;
constexpr std::size_t kDomainAt = 8;  // after DOMAIN='
constexpr std::size_t kServersAt = 4; // after DNS=
constexpr std::size_t kGatewayAt = 8; // after GATEWAY=

struct Line {
    char text[kLineSize];

    bool read(std::FILE* file)
    {
        std::memset(text, 0, sizeof(text)); // what follows a short line must not be an earlier line's
        return std::fgets(text, sizeof(text), file) != nullptr;
    }
    bool startsWith(std::string_view key) const { return std::string_view(text).starts_with(key); }
};

/** The first two words of what is left of the resolver file, each cut to its buffer. */
struct WordPair {
    char key[32];
    char value[20];

    /** False at the end of the file, and after a read error, which would else never end. */
    bool read(std::FILE* file)
    {
        *this = {};
        if (std::fscanf(file, "%31s", key) != 1) {
            return false;
        }
        skipRestOfWord(file); // or it would be taken for the next word
        (void)std::fscanf(file, "%19s", value);
        skipRestOfWord(file);
        return true;
    }

private:
    static void skipRestOfWord(std::FILE* file) { (void)std::fscanf(file, "%*[^ \t\n\v\f\r]"); }
};

/** What the DHCP client told about names. */
struct LeaseNames {
    char domain[kLineSize];
    char servers[kLineSize];
};

FixedText<256> infoPath(const char* ifname)
{
    return FixedText<256>("/etc/dhcpc/dhcpcd-%s.info", ifname);
}

LeaseNames readNames(std::FILE* file)
{
    LeaseNames names{};
    Line line;
    while ((names.domain[0] == '\0' || names.servers[0] == '\0') && line.read(file)) {
        if (line.startsWith("DOMAIN")) {
            copyText(names.domain, line.text + kDomainAt);
        } else if (line.startsWith("DNS")) {
            copyText(names.servers, line.text + kServersAt);
        }
    }
    return names;
}

/** Takes the next dotted quad off a line of words with commas between them; false when none is left. */
bool takeServer(const char*& words, std::uint32_t& server)
{
    bool found = false;
    while (!found && *words != '\0' && *words != '\n') {
        const std::size_t length = std::strcspn(words, ",\n");
        const FixedText<kLineSize> word("%.*s", static_cast<int>(length), words);
        found = parseDottedQuad(word.c_str(), server); // other words could not be resolvers, and may be anything
        words += length + (words[length] == ',' ? 1 : 0);
    }
    return found;
}

bool hasServer(const LeaseNames& names)
{
    const char* words = names.servers;
    std::uint32_t server = 0;
    return takeServer(words, server);
}

void writeNames(std::FILE* file, const LeaseNames& names)
{
    std::uint32_t server = 0;
    for (const char* words = names.servers; takeServer(words, server);) {
        (void)std::fprintf(file, "nameserver %s\n", DottedQuad(server).c_str());
    }
    const auto domainLength = static_cast<int>(std::strcspn(names.domain, "'\n"));
    (void)std::fprintf(file, "search %.*s\n", domainLength, names.domain);
}
} // namespace

RETURN_TYPE GetDNS(unsigned int* dns1, unsigned int* dns2)
{
    NET_REQUIRE(dns1 != nullptr, "dns1");
    NET_REQUIRE(dns2 != nullptr, "dns2");
    const UniqueFile file(kResolverFile, "re");
    if (!file) {
        const int error = errno;
        NET_ERROR("cannot open /etc/resolv.conf\n");
        NET_ERROR("errno=%d, %s\n", error, std::strerror(error));
        return kFail;
    }
    unsigned int* const outputs[] = {dns1, dns2};
    std::size_t found = 0;
    WordPair words;
    while (found < std::size(outputs) && words.read(file.get())) {
        if (std::strcmp(words.key, "nameserver") != 0) {
            continue;
        }
        if (std::uint32_t server = 0; parseDottedQuad(words.value, server)) {
            *outputs[found++] = server;
        } else {
            NET_ERROR("error in /etc/resolv.conf\n");
        }
    }
    return found > 0 ? kOk : kFail;
}

RETURN_TYPE SetDNS(unsigned int dns1, unsigned int dns2)
{
    const UniqueFile file(kResolverFile, "we");
    if (!file) {
        NET_ERROR("cannot open /etc/resolv.conf\n");
        return kFail;
    }
    (void)std::fprintf(file.get(), "nameserver %s\n", DottedQuad(dns1).c_str());
    (void)std::fprintf(file.get(), "nameserver %s\n", DottedQuad(dns2).c_str());
    return kOk;
}

RETURN_TYPE SetDNSDhcp(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    const MovoNetIPMode_e mode = load(pIface->ipMode);
    if (mode != _MOVO_NET_IPMODE_DHCP_ && mode != _MOVO_NET_IPMODE_AUTOIP_) {
        NET_ERROR("not configured by dhcpcd\n");
        return kFail;
    }
    const auto path = infoPath(pIface->name);
    const UniqueFile info(path.c_str(), "re");
    if (!info) {
        NET_ERROR("cannot open %s\n", path.c_str());
        return kFail;
    }
    const LeaseNames names = readNames(info.get());
    if (!hasServer(names)) {
        NET_ERROR("dns not found\n");
        return kFail;
    }
    NET_INFO("domain: %s, dns: %s\n", names.domain, names.servers);
    const UniqueFile resolver(kResolverFile, "we");
    if (!resolver) {
        NET_ERROR("cannot open /etc/resolv.conf\n");
        return kFail;
    }
    writeNames(resolver.get(), names);
    return kOk;
}

RETURN_TYPE GetDefaultGatewayDHCP(unsigned int* gateway, const char* ifname)
{
    NET_REQUIRE(gateway != nullptr, "gateway");
    *gateway = 0;
    const auto path = infoPath(ifname);
    const UniqueFile info(path.c_str(), "re");
    if (!info) {
        NET_ERROR("cannot open %s\n", path.c_str());
        return kFail;
    }
    Line line;
    while (line.read(info.get())) {
        if (!line.startsWith("GATEWAY")) {
            continue;
        }
        char* value = line.text + kGatewayAt;
        value[std::strcspn(value, "\n")] = '\0';
        std::uint32_t address = 0;
        if (!parseDottedQuad(value, address)) {
            NET_ERROR("error in dhcpcd info file\n");
            return kFail;
        }
        *gateway = address;
        NET_INFO("gateway: %s\n", value);
        return kOk;
    }
    NET_ERROR("gateway not found\n");
    return kFail;
}

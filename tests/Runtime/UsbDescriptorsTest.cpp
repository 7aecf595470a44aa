// Tests with descriptors that are whole, that are cut, and that have wrong lengths. The bytes
// follow the records of the USB standard.
#include "Runtime/UsbDescriptors.h"

#include <qlt/Runtime/Usb.h>

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

namespace
{

using namespace qlt;
using Bytes = std::vector<std::uint8_t>;

const Bytes CONFIGURATION = {9, 2, 0, 0, 1, 1, 0, 0x80, 250};
const Bytes INTERRUPT = {7, 5, 0x81, 3, 64, 0, 1};
const Bytes BULK = {7, 5, 0x82, 2, 0x00, 0x02, 0};

Bytes Interface(std::uint8_t number, std::uint8_t alternate, std::uint8_t endPoints)
{
    return {9, 4, number, alternate, endPoints, 0xFF, 0, 0, 0};
}

/// Joins the records and writes the length of the result into the first one.
Bytes Join(const std::vector<Bytes>& records)
{
    Bytes all;
    for (const Bytes& record : records)
    {
        all.insert(all.end(), record.begin(), record.end());
    }
    all[2] = static_cast<std::uint8_t>(all.size() & 0xFF);
    all[3] = static_cast<std::uint8_t>(all.size() >> 8);
    return all;
}

Bytes Headset() { return Join({CONFIGURATION, Interface(0, 0, 2), INTERRUPT, BULK}); }

/// The addresses of the endpoints that are found. The bytes are copied into memory of exactly their
/// size, where a sanitizer sees a read past the end.
Bytes Addresses(const Bytes& bytes)
{
    Bytes addresses;
    for (const UsbEndPointRecord& endPoint : ParseConfiguration(Bytes(bytes)))
    {
        addresses.push_back(endPoint.address);
    }
    return addresses;
}

/// A program's own device, host and endpoint, which implement only what they must.
struct OneDevice final : VendorUsbDevice
{
    std::uint16_t VendorId() const override { return 1; }
    std::uint16_t ProductId() const override { return 2; }
    std::uint8_t EndPointCount() const override { return 0; }
    UsbEndPoint& EndPoint(std::uint8_t) override { throw std::out_of_range("no endpoint"); }
};
struct OneDeviceHost final : UsbHost
{
    std::unique_ptr<VendorUsbDevice> OpenFirst() override { return std::make_unique<OneDevice>(); }
};
struct SilentEndPoint final : UsbEndPoint
{
    std::uint8_t Attributes() const override { return 3; }
    bool TransferData(std::uint8_t*, std::uint32_t&) override { return false; }
};

} // namespace

TEST(UsbTest, AHostThatImplementsTheLeastHasOneDeviceAndNothingToStream)
{
    OneDeviceHost host;
    EXPECT_EQ(host.CountDevices(), 1U);
    EXPECT_NE(host.Open(0), nullptr);
    EXPECT_EQ(host.Open(1), nullptr);
    EXPECT_EQ(host.Name() + host.Problem(), "");
    SilentEndPoint endPoint;
    EXPECT_EQ(endPoint.Address(), 0);
    const std::unique_ptr<UsbTransfer> transfer = endPoint.BeginTransfer(nullptr, 64, nullptr);
    std::uint32_t length = 64;
    EXPECT_FALSE(transfer->Wait(0));
    EXPECT_FALSE(transfer->Finish(length));
    EXPECT_EQ(length, 0U);
}

TEST(UsbDescriptorsTest, ADeviceDescriptorHasTheIds)
{
    Bytes bytes = {18, 1, 0, 2, 0xFF, 0xFF, 0xFF, 64, 0xB4, 0x04, 0xF1, 0x00, 0, 1, 0, 0, 0, 1};
    const std::optional<UsbIds> ids = ParseDeviceDescriptor(bytes);
    ASSERT_TRUE(ids);
    EXPECT_EQ(ids->vendor, 0x04B4);
    EXPECT_EQ(ids->product, 0x00F1);

    bytes[1] = 2;
    EXPECT_FALSE(ParseDeviceDescriptor(bytes)) << "The bytes are another descriptor.";
    bytes[1] = 1;
    bytes.pop_back();
    EXPECT_FALSE(ParseDeviceDescriptor(bytes)) << "The descriptor is cut.";
    EXPECT_FALSE(ParseDeviceDescriptor({}));
}

TEST(UsbDescriptorsTest, AConfigurationHasTheEndpointsInTheirOrder)
{
    Bytes twice = BULK;
    twice[5] = 0x0C; // 1024 bytes, and one packet more
    const std::vector<UsbEndPointRecord> found =
        ParseConfiguration(Join({CONFIGURATION, Interface(0, 0, 3), INTERRUPT, BULK, twice}));
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].address, 0x81);
    EXPECT_EQ(found[0].attributes, 3);
    EXPECT_EQ(found[1].attributes, 2);
    EXPECT_EQ(found[0].maxPacket, 64U);
    EXPECT_EQ(found[1].maxPacket, 512U);
    EXPECT_EQ(found[2].maxPacket, 2048U);
}

TEST(UsbDescriptorsTest, TheEndpointsAreThoseOfTheFirstSettingOfTheFirstInterface)
{
    const Bytes vendors = {5, 0x24, 1, 2, 3};
    const Bytes longer = {9, 5, 0x83, 1, 0, 2, 4, 0, 0};
    const Bytes one = Interface(0, 0, 1);
    const std::pair<std::vector<Bytes>, Bytes> rows[] = {
        {{vendors, Interface(0, 0, 3), vendors, INTERRUPT, vendors, longer, BULK},
         {0x81, 0x83, 0x82}},
        {{Interface(1, 0, 1), BULK, Interface(0, 1, 1), BULK, one, INTERRUPT, Interface(0, 2, 1),
          BULK},
         {0x81}},
        {{one, INTERRUPT, one, BULK}, {0x81}}, // the endpoint is listed twice
        {{one, INTERRUPT, BULK}, {0x81}},      // the announced number limits the result
        {{Interface(0, 0, 9), INTERRUPT}, {0x81}},
    };
    for (const auto& [records, addresses] : rows)
    {
        std::vector<Bytes> all = {CONFIGURATION};
        all.insert(all.end(), records.begin(), records.end());
        EXPECT_EQ(Addresses(Join(all)), addresses);
    }
    std::vector<Bytes> many(300, INTERRUPT);
    many.front() = CONFIGURATION;
    many.insert(many.begin() + 1, Interface(0, 0, 255));
    EXPECT_EQ(Addresses(Join(many)).size(), MAX_END_POINTS);
}

TEST(UsbDescriptorsTest, ACutConfigurationHasTheEndpointsThatAreWhole)
{
    const Bytes whole = Headset();
    for (std::size_t size = 0; size <= whole.size(); ++size)
    {
        Bytes bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const std::size_t expected = size < 25 ? 0 : size < 32 ? 1 : 2;
        EXPECT_EQ(Addresses(bytes).size(), expected) << "The device sends " << size << " bytes.";

        bytes = whole;
        bytes[2] = static_cast<std::uint8_t>(size);
        EXPECT_EQ(Addresses(bytes).size(), expected)
            << "The device announces " << size << " bytes.";
    }
}

TEST(UsbDescriptorsTest, AWrongLengthEndsTheWalk)
{
    for (const std::size_t record : {std::size_t{9}, std::size_t{18}})
    {
        for (const int length : {0, 1, 24, 255})
        {
            Bytes bytes = Headset();
            bytes[record] = static_cast<std::uint8_t>(length);
            EXPECT_TRUE(Addresses(bytes).empty())
                << "Record " << record << " has the length " << length << ".";
        }
    }
    Bytes bytes = Headset();
    bytes[18] = 6; // it is too short for an endpoint, and the next record starts too early
    EXPECT_TRUE(Addresses(bytes).empty());
    bytes = Headset();
    bytes[1] = 1;
    EXPECT_TRUE(Addresses(bytes).empty()) << "The bytes are no configuration.";
}

TEST(UsbDescriptorsTest, NoBytesLeadOutOfBounds)
{
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i)
    {
        Bytes bytes = Headset();
        for (std::uint32_t change = random() % 4; change > 0; --change)
        {
            bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
        }
        bytes.resize(random() % (bytes.size() + 1));
        EXPECT_LE(Addresses(bytes).size(), 2U);
    }
}

TEST(UsbDescriptorsTest, SizesAreRoundedUpToWholePackets)
{
    EXPECT_EQ(RoundUpToPackets(0x388000, 512), 0x388000U);
    EXPECT_EQ(RoundUpToPackets(0x388001, 512), 0x388200U);
    EXPECT_EQ(RoundUpToPackets(1, 64), 64U);
    EXPECT_EQ(RoundUpToPackets(100, 0), 100U) << "The packets have no size.";
    EXPECT_EQ(RoundUpToPackets(0xFFFFFFFF, 512), 0xFFFFFFFFU);
}

// The virtual headset is a kernel driver for Wine. It answers the requests of programs as the USB
// chip vendor's driver does. A test plugs it in and decides what its pipes send.
#include "VirtualHeadsetControl.h"
#include "VirtualHeadsetPipe.h"

namespace
{

using namespace virtual_headset;

constexpr GUID DRIVER_INTERFACE = {
    0xAE18AA60, 0x7F6A, 0x11D4, {0x97, 0xDD, 0x00, 0x01, 0x02, 0x29, 0xB9, 0x59}};

// The vendor driver's requests.
constexpr ULONG CONTROL_TRANSFER = 0x220020;
constexpr ULONG SET_TRANSFER_SIZE = 0x220038;
constexpr ULONG ABORT_PIPE = 0x220044;
constexpr ULONG READ_PIPE = 0x22004B;

// The transfer header of the vendor's driver.
#pragma pack(push, 1)
struct Header
{
    UCHAR requestType;
    UCHAR request;
    USHORT value;
    USHORT index;
    USHORT length;
    ULONG timeoutS;
    UCHAR reserved;
    UCHAR endPoint;
    ULONG ntStatus;
    ULONG usbStatus;
    ULONG isochronousOffset;
    ULONG isochronousLength;
    ULONG bufferOffset;
    ULONG bufferLength;
};
#pragma pack(pop)
static_assert(sizeof(Header) == 38, "the vendor driver's layout");

constexpr UCHAR FROM_DEVICE = 0x80;
constexpr UCHAR GET_DESCRIPTOR = 6;
constexpr USHORT DEVICE_DESCRIPTOR = 0x100;
constexpr USHORT CONFIGURATION_DESCRIPTOR = 0x200;

// One interface with its two endpoints.
constexpr UCHAR CONFIGURATION[] = {9, 2, 32,   0, 1,  1, 0, 0x80, 250, //
                                   9, 4, 0,    0, 2,  0, 0, 0,    0,   //
                                   7, 5, 0x81, 3, 64, 0, 1,            //
                                   7, 5, 0x82, 2, 0,  2, 0};

struct Device
{
    DEVICE_OBJECT* below;
    UNICODE_STRING name;
    BOOLEAN plugged;
    NTSTATUS descriptorStatus;
    UCHAR descriptor[18];
    Pipe pipes[PIPE_COUNT];
    ULONG transferSize;
};

DEVICE_OBJECT* control; // receives the commands of the test
Device* devices[DEVICE_COUNT];

Pipe* FindPipe(Device& device, UCHAR address)
{
    for (ULONG i = 0; i < PIPE_COUNT; ++i)
    {
        if (PIPE_ADDRESSES[i] == address)
        {
            return &device.pipes[i];
        }
    }
    return nullptr;
}

/// Returns true when all bytes of two headers are equal.
bool AreEqual(const Header& one, const Header& other)
{
    return RtlCompareMemory(&one, &other, sizeof one) == sizeof one;
}

/// The only header of a read that this driver accepts. Only the endpoint is set.
bool IsReadOf(const Header& header)
{
    Header expected = {};
    expected.endPoint = header.endPoint;
    return AreEqual(header, expected);
}

/// The only header of a descriptor's request that this driver accepts. It has a time limit, and the
/// data follows the header.
bool IsDescriptorRequest(const Header& header, ULONG size)
{
    Header expected = {};
    expected.requestType = FROM_DEVICE;
    expected.request = GET_DESCRIPTOR;
    expected.value =
        header.value == DEVICE_DESCRIPTOR ? DEVICE_DESCRIPTOR : CONFIGURATION_DESCRIPTOR;
    expected.length = static_cast<USHORT>(size - sizeof(Header));
    expected.timeoutS = 2;
    expected.bufferOffset = sizeof(Header);
    expected.bufferLength = expected.length;
    return AreEqual(header, expected);
}

NTSTATUS SendDescriptor(const Device& device, IRP* irp, UCHAR* buffer, ULONG size)
{
    const auto& header = *reinterpret_cast<const Header*>(buffer);
    if (!IsDescriptorRequest(header, size))
    {
        return Complete(irp, STATUS_UNSUCCESSFUL);
    }
    if (device.descriptorStatus != STATUS_SUCCESS)
    {
        return Complete(irp, device.descriptorStatus);
    }
    const bool configuration = header.value == CONFIGURATION_DESCRIPTOR;
    const ULONG length = configuration ? sizeof(CONFIGURATION) : sizeof(device.descriptor);
    const ULONG count = header.length < length ? header.length : length;
    RtlCopyMemory(buffer + sizeof(Header), configuration ? CONFIGURATION : device.descriptor,
                  count);
    return Complete(irp, STATUS_SUCCESS, sizeof(Header) + count);
}

NTSTATUS AnswerProgram(Device& device, IRP* irp, ULONG code, ULONG sent, ULONG room)
{
    auto* buffer = static_cast<UCHAR*>(irp->AssociatedIrp.SystemBuffer);
    if (!device.plugged)
    {
        return Complete(irp, STATUS_DEVICE_NOT_CONNECTED);
    }
    if (code == CONTROL_TRANSFER && sent == room && room > sizeof(Header))
    {
        return SendDescriptor(device, irp, buffer, room);
    }
    if (code == READ_PIPE && sent == sizeof(Header))
    {
        // In Wine the input is in the system buffer. On Windows it is elsewhere.
        const auto& header = *reinterpret_cast<const Header*>(buffer);
        Pipe* pipe = IsReadOf(header) ? FindPipe(device, header.endPoint) : nullptr;
        return pipe != nullptr ? pipe->Read(irp) : Complete(irp, STATUS_INVALID_PARAMETER);
    }
    if (code == ABORT_PIPE && sent == 1)
    {
        Pipe* pipe = FindPipe(device, buffer[0]);
        if (pipe != nullptr)
        {
            pipe->FailReads(STATUS_CANCELLED);
        }
        return Complete(irp, pipe != nullptr ? STATUS_SUCCESS : STATUS_UNSUCCESSFUL);
    }
    if (code == SET_TRANSFER_SIZE && sent == 5 && room == 5 &&
        FindPipe(device, buffer[0]) != nullptr)
    {
        RtlCopyMemory(&device.transferSize, buffer + 1, 4);
        return Complete(irp, STATUS_SUCCESS, 5);
    }
    return Complete(irp, STATUS_INVALID_DEVICE_REQUEST);
}

void SetPlugged(Device& device, BOOLEAN plugged)
{
    if (device.plugged != plugged)
    {
        device.plugged = plugged;
        IoSetDeviceInterfaceState(&device.name, plugged);
    }
    for (Pipe& pipe : device.pipes)
    {
        pipe.FailReads(STATUS_DEVICE_NOT_CONNECTED);
        pipe.DropPushes();
    }
}

void Plug(Device& device, const Order& order)
{
    constexpr UCHAR DESCRIPTOR[18] = {18, 1, 0, 2, 0xFF, 0xFF, 0xFF, 64, 0,
                                      0,  0, 0, 0, 1,    0,    0,    0,  1};
    RtlCopyMemory(device.descriptor, DESCRIPTOR, sizeof(DESCRIPTOR));
    RtlCopyMemory(device.descriptor + 8, &order.vendorId, 2);
    RtlCopyMemory(device.descriptor + 10, &order.productId, 2);
    device.descriptorStatus = static_cast<NTSTATUS>(order.status);
    SetPlugged(device, TRUE);
}

NTSTATUS SendCounts(IRP* irp, ULONG room)
{
    Counts counts = {0, devices[0]->transferSize, {}};
    while (counts.devices < DEVICE_COUNT && devices[counts.devices] != nullptr)
    {
        ++counts.devices;
    }
    for (ULONG i = 0; i < PIPE_COUNT; ++i)
    {
        counts.pending[i] = devices[0]->pipes[i].CountReads();
    }
    const ULONG size = room < sizeof(counts) ? room : sizeof(counts);
    RtlCopyMemory(irp->AssociatedIrp.SystemBuffer, &counts, size);
    return Complete(irp, STATUS_SUCCESS, size);
}

NTSTATUS Obey(IRP* irp, ULONG code, ULONG sent, ULONG room)
{
    const auto* order = static_cast<const Order*>(irp->AssociatedIrp.SystemBuffer);
    if (sent < sizeof(Order) || order->pipe >= PIPE_COUNT || devices[0] == nullptr)
    {
        return Complete(irp, STATUS_INVALID_PARAMETER);
    }
    switch (code)
    {
    case RESET:
        for (ULONG i = 0; i < DEVICE_COUNT && devices[i] != nullptr; ++i)
        {
            SetPlugged(*devices[i], FALSE);
        }
        break;
    case PLUG:
        Plug(*devices[devices[0]->plugged ? 1 : 0], *order);
        break;
    case PUSH:
        return Complete(
            irp, devices[0]->pipes[order->pipe].Push(static_cast<NTSTATUS>(order->status),
                                                     reinterpret_cast<const UCHAR*>(order + 1),
                                                     sent - static_cast<ULONG>(sizeof(Order))));
    case COUNT:
        return SendCounts(irp, room);
    default:
        return Complete(irp, STATUS_INVALID_DEVICE_REQUEST);
    }
    return Complete(irp, STATUS_SUCCESS);
}

/// Null for the device that receives the commands.
Device* DeviceOf(DEVICE_OBJECT* object)
{
    return object == control ? nullptr : static_cast<Device*>(object->DeviceExtension);
}

NTSTATUS NTAPI OnRequest(DEVICE_OBJECT* object, IRP* irp)
{
    const auto& request = IoGetCurrentIrpStackLocation(irp)->Parameters.DeviceIoControl;
    const ULONG code = request.IoControlCode;
    const ULONG sent = request.InputBufferLength;
    const ULONG room = request.OutputBufferLength;
    Device* device = DeviceOf(object);
    return device == nullptr ? Obey(irp, code, sent, room)
                             : AnswerProgram(*device, irp, code, sent, room);
}

NTSTATUS NTAPI OnOpenOrClose(DEVICE_OBJECT*, IRP* irp) { return Complete(irp, STATUS_SUCCESS); }

/// The device exists as long as the driver, so the driver passes these requests to the device
/// below.
NTSTATUS NTAPI OnPlugAndPlay(DEVICE_OBJECT* object, IRP* irp)
{
    if (DeviceOf(object) == nullptr)
    {
        return Complete(irp, STATUS_INVALID_DEVICE_REQUEST);
    }
    IoSkipCurrentIrpStackLocation(irp);
    return IoCallDriver(DeviceOf(object)->below, irp);
}

NTSTATUS NTAPI AddDevice(DRIVER_OBJECT* driver, DEVICE_OBJECT* below)
{
    ULONG index = 0;
    while (index < DEVICE_COUNT && devices[index] != nullptr)
    {
        ++index;
    }
    DEVICE_OBJECT* object = nullptr;
    if (index == DEVICE_COUNT || IoCreateDevice(driver, sizeof(Device), nullptr,
                                                FILE_DEVICE_UNKNOWN, 0, FALSE, &object) != 0)
    {
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    Device& device = *DeviceOf(object); // all zero
    device.below = IoAttachDeviceToDeviceStack(object, below);
    for (Pipe& pipe : device.pipes)
    {
        pipe.Init();
    }
    const NTSTATUS status =
        IoRegisterDeviceInterface(below, &DRIVER_INTERFACE, nullptr, &device.name);
    object->Flags &= ~static_cast<ULONG>(DO_DEVICE_INITIALIZING);
    devices[index] = &device;
    return status;
}

} // namespace

extern "C" NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING*)
{
    driver->MajorFunction[IRP_MJ_CREATE] = OnOpenOrClose;
    driver->MajorFunction[IRP_MJ_CLOSE] = OnOpenOrClose;
    driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = OnRequest;
    driver->MajorFunction[IRP_MJ_PNP] = OnPlugAndPlay;
    driver->DriverExtension->AddDevice = AddDevice;

    UNICODE_STRING name;
    UNICODE_STRING link;
    RtlInitUnicodeString(&name, L"\\Device\\VirtualHeadset");
    RtlInitUnicodeString(&link, L"\\DosDevices\\VirtualHeadset");
    const NTSTATUS status =
        IoCreateDevice(driver, 0, &name, FILE_DEVICE_UNKNOWN, 0, FALSE, &control);
    if (status != STATUS_SUCCESS)
    {
        return status;
    }
    control->Flags &= ~static_cast<ULONG>(DO_DEVICE_INITIALIZING);
    return IoCreateSymbolicLink(&link, &name);
}

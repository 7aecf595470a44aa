#include "VirtualHeadsetPipe.h"

namespace virtual_headset
{
namespace
{

constexpr ULONG POOL_TAG = 0x74736468;

NTSTATUS CompleteRead(IRP* irp, NTSTATUS status, const void* bytes, ULONG length)
{
    const ULONG room =
        IoGetCurrentIrpStackLocation(irp)->Parameters.DeviceIoControl.OutputBufferLength;
    const ULONG count = length < room ? length : room;
    RtlCopyMemory(irp->UserBuffer, bytes, count);
    return Complete(irp, status, count);
}

void NTAPI CancelRead(DEVICE_OBJECT*, IRP* irp)
{
    IoReleaseCancelSpinLock(irp->CancelIrql);
    RemoveEntryList(&irp->Tail.Overlay.ListEntry);
    Complete(irp, STATUS_CANCELLED);
}

} // namespace

/// A push that waits; its bytes follow it.
struct Pipe::Message
{
    LIST_ENTRY entry; // at its beginning
    NTSTATUS status;
    ULONG length;
};

NTSTATUS Complete(IRP* irp, NTSTATUS status, ULONG_PTR length)
{
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = length;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return status;
}

void Pipe::Init()
{
    InitializeListHead(&mReads);
    InitializeListHead(&mPushes);
}

NTSTATUS Pipe::Read(IRP* irp)
{
    if (Message* message = TakePush())
    {
        const NTSTATUS status = CompleteRead(irp, message->status, message + 1, message->length);
        ExFreePool(message);
        return status;
    }
    IoMarkIrpPending(irp);
    InsertTailList(&mReads, &irp->Tail.Overlay.ListEntry);
    IoSetCancelRoutine(irp, CancelRead);
    return STATUS_PENDING;
}

NTSTATUS Pipe::Push(NTSTATUS status, const UCHAR* bytes, ULONG length)
{
    if (IRP* irp = TakeRead())
    {
        CompleteRead(irp, status, bytes, length);
        return STATUS_SUCCESS;
    }
    auto* message = static_cast<Message*>(
        ExAllocatePoolWithTag(NonPagedPool, sizeof(Message) + length, POOL_TAG));
    if (message == nullptr)
    {
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    message->status = status;
    message->length = length;
    RtlCopyMemory(message + 1, bytes, length);
    InsertTailList(&mPushes, &message->entry);
    return STATUS_SUCCESS;
}

void Pipe::FailReads(NTSTATUS status)
{
    while (IRP* irp = TakeRead())
    {
        Complete(irp, status);
    }
}

void Pipe::DropPushes()
{
    while (Message* message = TakePush())
    {
        ExFreePool(message);
    }
}

/// The oldest read, unless all are being cancelled.
IRP* Pipe::TakeRead()
{
    for (LIST_ENTRY* entry = mReads.Flink; entry != &mReads; entry = entry->Flink)
    {
        auto* irp = reinterpret_cast<IRP*>(reinterpret_cast<UCHAR*>(entry) -
                                           offsetof(IRP, Tail.Overlay.ListEntry));
        if (IoSetCancelRoutine(irp, nullptr) != nullptr)
        {
            RemoveEntryList(entry);
            return irp;
        }
    }
    return nullptr;
}

Pipe::Message* Pipe::TakePush()
{
    const bool any = !IsListEmpty(&mPushes);
    return any ? reinterpret_cast<Message*>(RemoveHeadList(&mPushes)) : nullptr;
}

std::uint32_t Pipe::CountReads() const
{
    std::uint32_t count = 0;
    for (const LIST_ENTRY* entry = mReads.Flink; entry != &mReads; entry = entry->Flink)
    {
        ++count;
    }
    return count;
}

} // namespace virtual_headset

// One endpoint of the virtual headset, seen from the device. Reads wait for a push, or pushes wait
// for a read. The object lives in zeroed memory of the kernel, so Init replaces its constructor.
//
// It needs no locks, because Wine runs all requests to a driver and their cancellations on one
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <intrin.h>
// The driver kit defines two of the compiler's own operations again, so rename its definitions.
#define InterlockedBitTestAndSet KitInterlockedBitTestAndSet
#define InterlockedBitTestAndReset KitInterlockedBitTestAndReset
#include <ntddk.h>

namespace virtual_headset
{

/// Ends a request, and returns its status.
inline NTSTATUS Complete(IRP* irp, NTSTATUS status, ULONG_PTR length = 0)
{
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = length;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return status;
}

class Pipe
{
public:
    void Init()
    {
        InitializeListHead(&mReads);
        InitializeListHead(&mPushes);
    }

    /// Ends the read at once when a push waits. Otherwise the read waits.
    NTSTATUS Read(IRP* irp)
    {
        if (Message* message = TakePush())
        {
            const NTSTATUS status =
                CompleteRead(irp, message->status, message + 1, message->length);
            ExFreePool(message);
            return status;
        }
        IoMarkIrpPending(irp);
        InsertTailList(&mReads, &irp->Tail.Overlay.ListEntry);
        IoSetCancelRoutine(irp, CancelRead);
        return STATUS_PENDING;
    }

    /// Ends the oldest read, or the next one, with these bytes and this status.
    NTSTATUS Push(NTSTATUS status, const UCHAR* bytes, ULONG length)
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

    void FailReads(NTSTATUS status)
    {
        while (IRP* irp = TakeRead())
        {
            Complete(irp, status);
        }
    }

    void DropPushes()
    {
        while (Message* message = TakePush())
        {
            ExFreePool(message);
        }
    }

    std::uint32_t CountReads() const
    {
        std::uint32_t count = 0;
        for (const LIST_ENTRY* entry = mReads.Flink; entry != &mReads; entry = entry->Flink)
        {
            ++count;
        }
        return count;
    }

private:
    /// A waiting push. Its bytes follow it in memory.
    struct Message
    {
        LIST_ENTRY entry; // must be the first member
        NTSTATUS status;
        ULONG length;
    };

    static constexpr ULONG POOL_TAG = 0x74736468;

    static NTSTATUS CompleteRead(IRP* irp, NTSTATUS status, const void* bytes, ULONG length)
    {
        const ULONG room =
            IoGetCurrentIrpStackLocation(irp)->Parameters.DeviceIoControl.OutputBufferLength;
        const ULONG count = length < room ? length : room;
        RtlCopyMemory(irp->UserBuffer, bytes, count);
        return Complete(irp, status, count);
    }

    static void NTAPI CancelRead(DEVICE_OBJECT*, IRP* irp)
    {
        IoReleaseCancelSpinLock(irp->CancelIrql);
        RemoveEntryList(&irp->Tail.Overlay.ListEntry);
        Complete(irp, STATUS_CANCELLED);
    }

    /// The oldest read, unless all are being cancelled.
    IRP* TakeRead()
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

    Message* TakePush()
    {
        const bool any = !IsListEmpty(&mPushes);
        return any ? reinterpret_cast<Message*>(RemoveHeadList(&mPushes)) : nullptr;
    }

    LIST_ENTRY mReads;
    LIST_ENTRY mPushes;
};

} // namespace virtual_headset

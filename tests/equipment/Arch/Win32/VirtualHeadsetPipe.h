// One endpoint of the virtual headset, from the device's side: reads that wait for a push, or
// pushes that wait for a read. Lives in memory of the kernel that is all zero, so Init is its
// constructor.
//
// No locks: Wine runs all requests to a driver, and their cancellations, on one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <intrin.h>
// The kit defines two operations of the compiler's once more, which C++ takes under other names.
#define InterlockedBitTestAndSet KitInterlockedBitTestAndSet
#define InterlockedBitTestAndReset KitInterlockedBitTestAndReset
#include <ntddk.h>

namespace virtual_headset
{

/// Ends a request, and returns its status.
NTSTATUS Complete(IRP* irp, NTSTATUS status, ULONG_PTR length = 0);

class Pipe
{
public:
    void Init();

    /// Ends at once with what is there, or waits.
    NTSTATUS Read(IRP* irp);

    /// Ends the oldest read, or the next one, with these bytes and this status.
    NTSTATUS Push(NTSTATUS status, const UCHAR* bytes, ULONG length);

    void FailReads(NTSTATUS status);
    void DropPushes();
    std::uint32_t CountReads() const;

private:
    struct Message;

    IRP* TakeRead();
    Message* TakePush();

    LIST_ENTRY mReads;
    LIST_ENTRY mPushes;
};

} // namespace virtual_headset

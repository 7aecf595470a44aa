using System;

namespace Quelta
{
    /// <summary>What went wrong, in one sentence; the cause inside, where the runtime has one.</summary>
    public sealed class QueltaException : Exception
    {
        public QueltaException(string message, Exception cause = null)
            : base(message, cause)
        {
        }
    }
}

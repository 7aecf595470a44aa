using System;

namespace Quelta
{
    /// <summary>An error of the SDK. The message is one sentence. The inner exception is the cause, if
    /// the runtime has one.</summary>
    public sealed class QueltaException : Exception
    {
        public QueltaException(string message, Exception cause = null)
            : base(message, cause)
        {
        }
    }
}

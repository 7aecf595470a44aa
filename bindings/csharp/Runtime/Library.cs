using System;
using System.Runtime.InteropServices;
using System.Text.RegularExpressions;

namespace Quelta
{
    internal static class Library
    {
        /// <summary>Explains the failures of a call. The runtime looks for the library in the first call, so every
        /// call that may be the first goes through here.</summary>
        internal static T Guard<T>(Func<T> call)
        {
            try
            {
                return call();
            }
            catch (Exception cause)
            {
                throw Explain(cause);
            }
        }

        internal static T New<T>(Func<T> make)
            where T : SafeHandle
        {
            T handle = Guard(make);
            if (handle.IsInvalid)
            {
                throw new QueltaException("There is no memory left for QueltaSDK.");
            }
            return handle;
        }

        /// <summary>Explains an exception of the runtime about modules, images or entry points: returns an
        /// exception with a clear sentence. Returns any other exception unchanged.</summary>
        internal static Exception Explain(Exception cause)
        {
            string name = cause.Message.Contains("QueltaKit") ? "QueltaKit" : "QueltaSDK";
            if (cause is DllNotFoundException)
            {
                return new QueltaException(
                    $"{name} is missing or cannot be loaded: put {name}.dll (on Linux lib{name}.so) " +
                    "into Plugins/x86_64, or where the system looks for libraries.", cause);
            }
            if (cause is BadImageFormatException)
            {
                return new QueltaException(
                    $"QueltaSDK is of the wrong kind: this is a {8 * IntPtr.Size}-bit program, which needs " +
                    "the library of its own processor and system.", cause);
            }
            if (cause is EntryPointNotFoundException)
            {
                return new QueltaException(
                    $"{name} is another library, or another version of it, and lacks the function " +
                    $"{Regex.Match(cause.Message, @"qlt(kit)?_\w+")}.", cause);
            }
            return cause;
        }
    }
}

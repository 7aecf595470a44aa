using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Quelta
{
    /// <summary>The kit's library: its version, and the lines that it prints.</summary>
    public static class Kit
    {
        private static readonly object LOCK = new object();
        private static readonly KitNative.LogHandler CALLBACK = OnLine;
        private static volatile Action<int, string> sHandler;
        private static volatile bool sCoreIsLoaded;

        /// <summary>The version of the library, for example "1.0.0".</summary>
        public static string Version
        {
            get
            {
                LoadCore();
                return Library.Guard(() => TextAt(KitNative.qltkit_version()));
            }
        }

        /// <summary>Passes each line that the library prints to handler(level, line): level 0 is
        /// information, 1 is an error. Null removes the handler after its running calls have returned.
        /// Any thread of the library may call the handler, which must not use a tracker. An exception
        /// of the handler is printed and has no other effect.</summary>
        public static void SetLogHandler(Action<int, string> handler)
        {
            lock (LOCK)
            {
                if (handler != null)
                {
                    sHandler = handler;
                }
                Call(() => KitNative.qltkit_set_log_handler(handler != null ? CALLBACK : null, IntPtr.Zero));
            }
        }

        [MonoPInvokeCallback(typeof(KitNative.LogHandler))]
        private static void OnLine(int level, IntPtr line, IntPtr user) => Run(() => sHandler(level, TextAt(line)));

        /// <summary>Runs a handler of the caller. No exception may reach the library.</summary>
        internal static void Run(Action handler)
        {
            try
            {
                handler();
            }
            catch (Exception exception)
            {
                Console.Error.WriteLine(exception);
            }
        }

        /// <summary>Calls a function and returns its result. Throws QueltaException with the sentence of
        /// an error.</summary>
        internal static int Call(Func<int> function)
        {
            LoadCore();
            int result = Library.Guard(function);
            if (result < 0)
            {
                throw new QueltaException(TextAt(KitNative.qltkit_last_error()) + ".");
            }
            return result;
        }

        /// <summary>Loads the core before the kit, so that the system finds it for the kit.</summary>
        private static void LoadCore()
        {
            if (!sCoreIsLoaded)
            {
                Library.Guard(() => Native.qlt_Params_EYE_RESOLUTION());
                sCoreIsLoaded = true;
            }
        }

        internal static byte[] Text(string text) => Encoding.UTF8.GetBytes(text + "\0");

        internal static string TextAt(IntPtr text)
        {
            int length = 0;
            while (Marshal.ReadByte(text, length) != 0)
            {
                ++length;
            }
            return Encoding.UTF8.GetString(BytesAt(text, length));
        }

        internal static byte[] BytesAt(IntPtr place, int count)
        {
            var bytes = new byte[count];
            if (count > 0)
            {
                Marshal.Copy(place, bytes, 0, count);
            }
            return bytes;
        }
    }
}

using System;
using System.Globalization;
using System.Runtime.InteropServices;

namespace Quelta
{
    // The library reads and writes these structs directly, so they have its layouts.

    [StructLayout(LayoutKind.Sequential)]
    public struct Vec2
    {
        public float X, Y;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Vec3
    {
        public float X, Y, Z;
    }

    /// <summary>A rotation, with the scalar part first. The default value is all zero, which is no
    /// rotation.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct Quaternion
    {
        public float W, X, Y, Z;

        public Quaternion(float w, float x, float y, float z)
        {
            W = w;
            X = x;
            Y = y;
            Z = z;
        }

        /// <summary>Returns the same orientation in the axes of Unity.</summary>
        public Quaternion ConvertToUnity()
        {
            try
            {
                Quaternion converted = this;
                Native.qlt_Quaternion_ConvertToUnity(ref converted);
                return converted;
            }
            catch (Exception cause) // Library.Guard would allocate a closure in every frame
            {
                throw Library.Explain(cause);
            }
        }

        public override string ToString()
        {
            return string.Format(CultureInfo.InvariantCulture, "{0:F4} {1:F4} {2:F4} {3:F4}", W, X, Y, Z);
        }
    }
}

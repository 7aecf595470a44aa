using System;
using System.Runtime.InteropServices;

namespace Quelta
{
    /// <summary>The lens mesh of one eye. Draw it over the eye's viewport without back-face culling. The
    /// indices are those of a triangle list or of one strip. Each getter copies its array.</summary>
    public sealed class Mesh : IDisposable
    {
        private readonly MeshHandle mHandle;

        public Mesh(int columns, int rows, bool leftEye = true, bool triangleList = true)
        {
            if (columns < 1 || rows < 1)
            {
                throw new QueltaException($"A mesh of {columns} x {rows} cells has nothing to draw.");
            }
            long cells = rows * (columns + (triangleList ? 0L : 2L)); // a cell has 6 or 2 indices
            if (cells > (triangleList ? int.MaxValue / 6 : 1L << 30))
            {
                throw new QueltaException($"A mesh of {columns} x {rows} cells has too many indices.");
            }
            mHandle = Library.New(
                () => Native.qlt_DistortionMeshBuilder_New(columns, rows, leftEye, triangleList));
            Native.qlt_DistortionMeshBuilder_BuildMesh(mHandle);
        }

        /// <summary>x and y are in the viewport, from -1 to 1. The depth is 0 inside the lens and -1.1
        /// outside.</summary>
        public Vec3[] Positions =>
            Copy<Vec3>(Native.qlt_DistortionMeshBuilder_GetPosition(mHandle), VertexCount);

        /// <summary>Texture coordinates of the red channel, from 0 to 1.</summary>
        public Vec2[] TextureR => Copy<Vec2>(Native.qlt_DistortionMeshBuilder_GetTextureR(mHandle), VertexCount);

        public Vec2[] TextureG => Copy<Vec2>(Native.qlt_DistortionMeshBuilder_GetTextureG(mHandle), VertexCount);

        public Vec2[] TextureB => Copy<Vec2>(Native.qlt_DistortionMeshBuilder_GetTextureB(mHandle), VertexCount);

        public int[] Indices => Copy<int>(Native.qlt_DistortionMeshBuilder_GetIndices(mHandle),
                                          Native.qlt_DistortionMeshBuilder_GetNumIndices(mHandle));

        public void Dispose() => mHandle.Dispose();

        private int VertexCount => Native.qlt_DistortionMeshBuilder_GetNumVertices(mHandle);

        private T[] Copy<T>(IntPtr first, int count)
            where T : struct
        {
            var copy = new T[count];
            int size = Marshal.SizeOf(typeof(T));
            for (int i = 0; i < count; i++)
            {
                copy[i] = (T)Marshal.PtrToStructure(IntPtr.Add(first, i * size), typeof(T));
            }
            GC.KeepAlive(mHandle); // the library's array ends with the handle
            return copy;
        }
    }
}

// The parts of Unity that the sample uses, so that it compiles and runs without Unity.
namespace UnityEngine
{
    public struct Quaternion
    {
        public readonly float x, y, z, w;

        public Quaternion(float x, float y, float z, float w)
        {
            this.x = x;
            this.y = y;
            this.z = z;
            this.w = w;
        }
    }

    public class Transform
    {
        public Quaternion localRotation { get; set; }
    }

    public class MonoBehaviour
    {
        public readonly Transform transform = new Transform();
        public bool enabled = true;
    }

    public static class Debug
    {
        public static string error;

        public static void LogError(object message) => error = (string)message;
    }
}

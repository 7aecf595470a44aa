// Tests of the package, compiled into one program with it, so that they reach its internals.
// Tests.exe HEADER KIT_HEADER FOLDER runs them with the real libraries; the headers are qlt/qlt_c_api.h and
// qltkit/qltkit_c_api.h, and the tests write their files into FOLDER. Tests.exe refused
// WORDS runs with a wrong library, and a use of the package must then fail with WORDS. On failure
// the program ends with 1 and prints the names of the failed tests.
using System;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text.RegularExpressions;
using System.Threading;
using Quelta;

internal static class Tests
{
    private const BindingFlags ANY = BindingFlags.Static | BindingFlags.Instance | BindingFlags.NonPublic;

    private static int sFailures;

    private static int Main(string[] arguments)
    {
        if (arguments[0] == "refused")
        {
            string words = string.Join(" ", arguments.Skip(1));
            Refused(words, () => Tracker.Simulator());
            Refused(words, () => new Mesh(1, 1));
            Refused(words, () => new Quelta.Quaternion().ConvertToUnity());
            Refused(words, () => Params.EyeFovDeg.ToString());
            Refused(words, () => new Headset("simulator"));
            Refused(words, () => Kit.Version.ToString());
            SampleSays(words);
        }
        else if (arguments[0] == "scripted")
        {
            TheHeadsetTurnsAboutYAndSeesObjectsAndFilms();
        }
        else
        {
            EveryFunctionOfTheHeaderIsDeclaredAndExists(File.ReadAllText(arguments[0]), "qlt", 57, typeof(Native));
            EveryFunctionOfTheHeaderIsDeclaredAndExists(File.ReadAllText(arguments[1]), "qltkit", 41,
                                                        typeof(KitNative));
            KitTests.Run(Expect, Refused, arguments[2]);
            TheSimulatorTurnsAboutX();
            AMeshHasTheArraysOfThePlainLens();
            ACameraNeedsAHeadset();
            TheConstantsAreThoseOfTheLibrary();
            ADisposedObjectIsNotUsed();
            TheSampleTurnsItsCamera();
            Refused(8 * IntPtr.Size + "-bit program",
                    () => Library.Guard<int>(() => throw new BadImageFormatException()));
        }
        return sFailures == 0 ? 0 : 1;
    }

    private static void Expect(bool condition, string what)
    {
        if (!condition)
        {
            Console.Error.WriteLine("failed: " + what);
            sFailures++;
        }
    }

    private static void Refused(string words, Action use)
    {
        try
        {
            use();
            Expect(false, "a use is refused with: " + words);
        }
        catch (QueltaException exception)
        {
            ExpectSentence(words, exception.Message);
        }
    }

    private static void ExpectSentence(string words, string message)
    {
        Expect(message.Contains(words) && Regex.IsMatch(message, @"\A[^\n]+\.\z"),
               "the message is one sentence with \"" + words + "\": " + message);
    }

    private static void EveryFunctionOfTheHeaderIsDeclaredAndExists(string header, string prefix, int count,
                                                                    Type native)
    {
        string[] names = Regex.Matches(header, $@"\b{prefix}_\w+(?=\()").Cast<Match>().Select(m => m.Value).ToArray();
        MethodInfo[] functions = native.GetMethods(ANY).Where(
            m => m.IsDefined(typeof(DllImportAttribute), false)).ToArray();
        Expect(names.Length == count, "the header has its functions: " + prefix);
        Expect(functions.Select(m => m.Name).OrderBy(n => n).SequenceEqual(names.OrderBy(n => n)),
               "the functions of the header are declared");
        foreach (MethodInfo function in functions)
        {
            Marshal.Prelink(function); // throws when the library has no such function
        }
    }

    private static void TheSimulatorTurnsAboutX()
    {
        using (Tracker tracker = Tracker.Simulator())
        {
            Expect(tracker.IsConnected && !tracker.IsTracking, "a new simulator is connected and not started");
            Expect(tracker.Start() && tracker.IsTracking, "it starts");
            while (tracker.Orientation.X == 0)
            {
                Thread.Sleep(1);
            }
            Expect(tracker.Stop() && !tracker.IsTracking, "it stops");
            Quelta.Quaternion q = tracker.Orientation;
            Expect(Math.Abs(q.W * q.W + q.X * q.X - 1) < 1e-5 && q.Y == 0 && q.Z == 0, "it turns about x");
            Expect(tracker.PredictedOrientation(0.01f).Equals(q), "it predicts the last orientation");
            Expect(tracker.Position.Equals(new Vec3()), "it stays in its place");
            Expect(tracker.ObjectPosition(-1).Equals(new Vec3()) &&
                   tracker.ObjectOrientation(3).Equals(new Quelta.Quaternion(1, 0, 0, 0)), "there are no objects");
        }
        Expect(new Quelta.Quaternion(0.5f, 1, 2, 3).ConvertToUnity().Equals(
            new Quelta.Quaternion(-0.5f, 1, 2, -3)), "the axes of Unity");
    }

    private static void WaitUntil(Func<bool> condition)
    {
        DateTime end = DateTime.UtcNow.AddSeconds(60);
        while (!condition() && DateTime.UtcNow < end)
        {
            Thread.Sleep(1);
        }
    }

    private static void TheHeadsetTurnsAboutYAndSeesObjectsAndFilms()
    {
        using (Tracker headset = Tracker.Headset())
        {
            WaitUntil(() => headset.IsConnected);
            headset.Start();
            WaitUntil(() => headset.Position.X != 0 && Math.Abs(headset.Orientation.Y) > 0.2);
            Expect(Is(headset.Position, 0.5f, 1.5f, -2), "the head's position is that of object 0");
            Expect(Is(headset.ObjectPosition(1), 0.25f, 0.75f, -1), "object 1 has its position");
            Expect(headset.ObjectOrientation(1).Equals(new Quelta.Quaternion(0, 1, 0, 0)),
                   "object 1 has its orientation");
            headset.Stop();
            Quelta.Quaternion turned = headset.Orientation;
            Expect(Math.Abs(turned.X) < 0.1 && Math.Abs(turned.Z) < 0.1, "the headset turns about y");
            Expect(headset.PredictedOrientation(0.01f).Equals(turned), "it predicts the last orientation");
            headset.ResetYawOrigin();
            Expect(Math.Abs(headset.Orientation.Y) < 0.01, "the current heading becomes yaw 0");
            using (var camera = new Camera(headset, 7))
            {
                camera.Update();
                Expect(camera.TextureId == 7, "the camera uses the texture that it is given");
            }
        }
    }

    private static bool Is(Vec3 at, float x, float y, float z) => at.X == x && at.Y == y && at.Z == z;

    private static bool Near(Vec2 at, double u, double v) => Math.Abs(at.X - u) < 1e-6 && Math.Abs(at.Y - v) < 1e-6;

    /// The two meshes differ in every argument. The numbers come from the plain model of the lens.
    private static void AMeshHasTheArraysOfThePlainLens()
    {
        using (var mesh = new Mesh(2, 3))
        {
            Expect(mesh.Indices.Length == 36 && mesh.Indices.Take(3).SequenceEqual(new[] { 0, 3, 1 }),
                   "the mesh is a triangle list");
            Expect(mesh.Positions.Length == 12 && Is(mesh.Positions[1], 0, -1, -1.1f),
                   "the positions are right");
            Expect(Near(mesh.TextureR[4], 0.5034533, 0.4074407), "red of the left eye is right");
            Expect(Near(mesh.TextureG[4], 0.5034828, 0.4066490), "green of the left eye is right");
            Expect(Near(mesh.TextureB[4], 0.5035208, 0.4056293), "blue of the left eye is right");
        }
        using (var strip = new Mesh(4, 2, false, false))
        {
            Expect(strip.Indices.Length == 22 && strip.Indices[1] == 5 && strip.Positions.Length == 15,
                   "the mesh is a strip");
            Expect(Near(strip.TextureR[6], 0.3517364, 0.5), "red of the right eye is right");
        }
        Refused("0 x 5", () => new Mesh(0, 5));
        Refused("too many", () => new Mesh(18919, 18919));
        Refused("too many", () => new Mesh(1 << 29, 2, true, false));
    }

    private static void ACameraNeedsAHeadset()
    {
        using (Tracker simulator = Tracker.Simulator())
        using (Tracker headset = Tracker.Headset())
        {
            Refused("none is connected", () => new Camera(simulator));
            Refused("none is connected", () => new Camera(headset));
        }
        Expect(Camera.Width == 2560 && Camera.Height == 1440, "the camera's image has its size");
    }

    private static void TheConstantsAreThoseOfTheLibrary()
    {
        Expect(Params.EyeResolution == 1024 && Params.EyeDistort && Params.EyeFovDeg == 126.5f &&
               Params.EyeStretch == 3, "the constants of an eye are right");
        Expect(Params.UserIpdM == 0.0625f && Params.UserNeckEyeHM == 0.0805f && Params.UserNeckEyeVM == 0.075f,
               "the constants of the user are right");
    }

    private static void ADisposedObjectIsNotUsed()
    {
        Tracker tracker = Tracker.Simulator();
        tracker.Start();
        tracker.Dispose();
        tracker.Dispose();
        try
        {
            tracker.Start();
            Expect(false, "a disposed tracker does not start");
        }
        catch (ObjectDisposedException)
        {
        }
    }

    private static void Send(TrackedCamera camera, string message)
    {
        typeof(TrackedCamera).GetMethod(message, ANY).Invoke(camera, null);
    }

    private static void TheSampleTurnsItsCamera()
    {
        var camera = new TrackedCamera { simulate = true };
        Send(camera, "OnEnable");
        while (camera.transform.localRotation.x == 0)
        {
            Send(camera, "LateUpdate");
        }
        UnityEngine.Quaternion q = camera.transform.localRotation;
        Expect(q.x > 0 && q.w < 0 && Math.Abs(q.x * q.x + q.w * q.w - 1) < 1e-5,
               "the sample turns its camera about x");
        Send(camera, "OnDisable");
        Send(camera, "OnDisable");
        Expect(camera.enabled && UnityEngine.Debug.error == null, "the sample reports no error");
    }

    private static void SampleSays(string words)
    {
        var camera = new TrackedCamera();
        Send(camera, "OnEnable");
        Send(camera, "OnDisable");
        Expect(!camera.enabled, "the sample is switched off");
        ExpectSentence(words, UnityEngine.Debug.error);
    }
}

// The package with the real library: Tests.exe HEADER, HEADER being qlt/qlt_c_api.h; and with a library
// that is not: Tests.exe refused WORDS, where a use of it must say WORDS. Compiled into one program with
// the package, whose internals it looks at. Ends with 1 and the names of what is not so.
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
            SampleSays(words);
        }
        else
        {
            EveryFunctionOfTheHeaderIsDeclaredAndExists(File.ReadAllText(arguments[0]));
            TheSimulatorTurnsAboutX();
            TheSmallestMesh();
            ACameraNeedsAHeadset();
            TheConstants();
            WhatIsDisposedOfIsNotUsed();
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
            Console.Error.WriteLine("not so: " + what);
            sFailures++;
        }
    }

    private static void Refused(string words, Action use)
    {
        try
        {
            use();
            Expect(false, "refused: " + words);
        }
        catch (QueltaException exception)
        {
            ExpectSentence(words, exception.Message);
        }
    }

    private static void ExpectSentence(string words, string message)
    {
        Expect(message.Contains(words) && Regex.IsMatch(message, @"\A[^\n]+\.\z"), words + " in: " + message);
    }

    private static void EveryFunctionOfTheHeaderIsDeclaredAndExists(string header)
    {
        string[] names = Regex.Matches(header, @"\bqlt_\w+(?=\()").Cast<Match>().Select(m => m.Value).ToArray();
        MethodInfo[] functions = typeof(Native).GetMethods(ANY).Where(
            m => m.IsDefined(typeof(DllImportAttribute), false)).ToArray();
        Expect(names.Length == 57, "57 functions");
        Expect(functions.Select(m => m.Name).OrderBy(n => n).SequenceEqual(names.OrderBy(n => n)),
               "the functions of the header are declared");
        foreach (MethodInfo function in functions)
        {
            Marshal.Prelink(function); // throws if there is none
        }
    }

    private static void TheSimulatorTurnsAboutX()
    {
        using (Tracker tracker = Tracker.Simulator())
        {
            Expect(tracker.IsConnected && !tracker.IsTracking, "a simulator is there and rests");
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

    private static void TheSmallestMesh()
    {
        using (var mesh = new Mesh(1, 1))
        {
            Expect(mesh.Indices.SequenceEqual(new[] { 0, 2, 1, 2, 1, 3 }), "the indices of one cell");
            Expect(string.Join(" ", mesh.Positions.Select(p => p.X + "," + p.Y)) == "-1,-1 1,-1 -1,1 1,1",
                   "the corners of one cell");
            Expect(mesh.TextureR.Length == 4 && mesh.TextureG.Length == 4 && mesh.TextureB.Length == 4,
                   "a texture coordinate per vertex");
        }
        using (var strip = new Mesh(2, 3, false, false))
        {
            Expect(strip.Positions.Length == 12, "the vertices of a strip");
            Expect(!strip.TextureR.SequenceEqual(strip.TextureG) && !strip.TextureG.SequenceEqual(strip.TextureB),
                   "each colour has its own texture coordinates");
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
        Expect(Camera.Width == 2560 && Camera.Height == 1440, "the size of the camera's image");
    }

    private static void TheConstants()
    {
        Expect(Params.EyeResolution > 0 && Params.EyeDistort && Math.Abs(Params.UserIpdM - 0.06) < 0.01 &&
               Params.EyeFovDeg > 60 && Params.EyeStretch >= 1, "the constants");
        Expect(Params.UserNeckEyeHM > 0 && Params.UserNeckEyeVM > 0, "the user's neck");
    }

    private static void WhatIsDisposedOfIsNotUsed()
    {
        Tracker tracker = Tracker.Simulator();
        tracker.Start();
        tracker.Dispose();
        tracker.Dispose();
        try
        {
            tracker.Start();
            Expect(false, "a tracker that is disposed of does not start");
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
        Expect(q.x > 0 && q.w < 0 && Math.Abs(q.x * q.x + q.w * q.w - 1) < 1e-5, "the camera's turn about x");
        Send(camera, "OnDisable");
        Send(camera, "OnDisable");
        Expect(camera.enabled && UnityEngine.Debug.error == null, "the sample says nothing");
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

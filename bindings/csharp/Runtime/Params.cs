namespace Quelta
{
    /// <summary>The constants of the headset and of a default user, in degrees, pixels and metres.</summary>
    public static class Params
    {
        public static float EyeFovDeg => Library.Guard(() => Native.qlt_Params_EYE_FOV_DEG());

        public static int EyeResolution => Library.Guard(() => Native.qlt_Params_EYE_RESOLUTION());

        public static float EyeStretch => Library.Guard(() => Native.qlt_Params_EYE_STRETCH());

        /// <summary>True if the lens needs its mesh.</summary>
        public static bool EyeDistort => Library.Guard(() => Native.qlt_Params_EYE_DISTORT());

        public static float UserIpdM => Library.Guard(() => Native.qlt_Params_USER_IPD_M());

        public static float UserNeckEyeHM => Library.Guard(() => Native.qlt_Params_USER_NECK_EYE_H_M());

        public static float UserNeckEyeVM => Library.Guard(() => Native.qlt_Params_USER_NECK_EYE_V_M());
    }
}

using UnityEngine;

/// <summary>A component that turns its camera with the head. Set `simulate` if you have no headset.</summary>
public class TrackedCamera : MonoBehaviour
{
    public bool simulate;

    private Quelta.Tracker mTracker;

    private void OnEnable()
    {
        try
        {
            mTracker = simulate ? Quelta.Tracker.Simulator() : Quelta.Tracker.Headset();
            mTracker.Start();
        }
        catch (Quelta.QueltaException exception)
        {
            Debug.LogError(exception.Message);
            enabled = false;
        }
    }

    private void LateUpdate()
    {
        Quelta.Quaternion head = mTracker.Orientation.ConvertToUnity();
        transform.localRotation = new Quaternion(head.X, head.Y, head.Z, head.W);
    }

    private void OnDisable()
    {
        mTracker?.Dispose();
        mTracker = null;
    }
}

// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>
extern "C" {
typedef UInt32 AudioObjectID;
typedef AudioObjectID AudioDeviceID;
typedef UInt32 AudioObjectPropertySelector, AudioObjectPropertyScope, AudioObjectPropertyElement;
struct AudioObjectPropertyAddress {
  AudioObjectPropertySelector mSelector;
  AudioObjectPropertyScope mScope;
  AudioObjectPropertyElement mElement;
};
typedef struct AudioObjectPropertyAddress AudioObjectPropertyAddress;
typedef void (^AudioObjectPropertyListenerBlock)(UInt32 inNumberAddresses,
                                                 const AudioObjectPropertyAddress* inAddresses);
enum : AudioObjectID { kAudioObjectSystemObject = 1, kAudioObjectUnknown = 0 };
enum : AudioObjectPropertyScope {
  kAudioObjectPropertyScopeGlobal = 'glob',
  kAudioObjectPropertyScopeInput = 'inpt',
  kAudioObjectPropertyScopeOutput = 'outp'
};
enum : AudioObjectPropertyElement { kAudioObjectPropertyElementMain DECLARED_SINCE(12.0) = 0 };
enum : AudioObjectPropertySelector {
  kAudioObjectPropertyName = 'lnam',
  kAudioObjectPropertyManufacturer = 'lmak',
  kAudioHardwarePropertyDevices = 'dev#',
  kAudioHardwarePropertyDefaultInputDevice = 'dIn ',
  kAudioHardwarePropertyDefaultOutputDevice = 'dOut',
  kAudioDevicePropertyDeviceUID = 'uid ',
  kAudioDevicePropertyTransportType = 'tran',
  kAudioDevicePropertyDeviceIsAlive = 'livn',
  kAudioDevicePropertyStreams = 'stm#',
  kAudioDevicePropertyDeviceIsRunningSomewhere = 'gone',
  kAudioDevicePropertyVolumeScalar = 'volm',
  kAudioDevicePropertyMute = 'mute',
};
enum : UInt32 {
  kAudioDeviceTransportTypeUSB = 'usb ',
  kAudioDeviceTransportTypeBluetooth = 'blue',
  kAudioDeviceTransportTypeBuiltIn = 'bltn'
};
enum : OSStatus {
  kAudioHardwareNoError = 0,
  kAudioHardwareUnknownPropertyError = 'who?',
  kAudioHardwareBadObjectError = '!obj',
  kAudioHardwareBadPropertySizeError = '!siz',
  kAudioHardwareUnsupportedOperationError = 'unop'
};
Boolean AudioObjectHasProperty(AudioObjectID inObjectID,
                               const AudioObjectPropertyAddress* inAddress) DECLARED_SINCE(10.4);
OSStatus AudioObjectIsPropertySettable(AudioObjectID inObjectID,
                                       const AudioObjectPropertyAddress* inAddress,
                                       Boolean* outIsSettable) DECLARED_SINCE(10.4);
OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID,
                                        const AudioObjectPropertyAddress* inAddress,
                                        UInt32 inQualifierDataSize, const void* inQualifierData,
                                        UInt32* outDataSize) DECLARED_SINCE(10.4);
OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID,
                                    const AudioObjectPropertyAddress* inAddress,
                                    UInt32 inQualifierDataSize, const void* inQualifierData,
                                    UInt32* ioDataSize, void* outData) DECLARED_SINCE(10.4);
OSStatus AudioObjectSetPropertyData(AudioObjectID inObjectID,
                                    const AudioObjectPropertyAddress* inAddress,
                                    UInt32 inQualifierDataSize, const void* inQualifierData,
                                    UInt32 inDataSize, const void* inData) DECLARED_SINCE(10.4);
OSStatus AudioObjectAddPropertyListenerBlock(AudioObjectID inObjectID,
                                             const AudioObjectPropertyAddress* inAddress,
                                             dispatch_queue_t inDispatchQueue,
                                             AudioObjectPropertyListenerBlock inListener)
    DECLARED_SINCE(10.7);
OSStatus AudioObjectRemovePropertyListenerBlock(AudioObjectID inObjectID,
                                                const AudioObjectPropertyAddress* inAddress,
                                                dispatch_queue_t inDispatchQueue,
                                                AudioObjectPropertyListenerBlock inListener)
    DECLARED_SINCE(10.7);
}

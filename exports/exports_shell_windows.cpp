// Windows of the host's shell that this module does not provide: the package editor, the
// screen-clip editors, the ROM toolbox, the on-screen keyboard window, the key dialog and
// virtual-button editing. They answer E_NOTIMPL for good; whatever arguments the host passes
// are left alone (the 64-bit calling convention lets the caller clean them up).

#include "kq_amiga.h"

extern "C" kq_status KQ9Editor(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQEditScreenClip(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQEditScreenClip2(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQROMToolbox(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQOpenKeyboardWindow(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQSetKeyboardWindow(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQResetKeyboardWindow(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQGetKeyboardWindowInfo(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQGetKeyDialog2(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQProcessVButtonEditMessage(void) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQProcessVButtonEditMessage2(void) { return KQ_E_NOTIMPL; }

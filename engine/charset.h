/* The database character set, chosen once for the process by bifun_dll_var_init. */
#ifndef BIFUN_ENGINE_CHARSET_H
#define BIFUN_ENGINE_CHARSET_H

/* The codes of bifun_settings.charset_code. */
enum { ZQ_CHARSET_GB18030 = 0, ZQ_CHARSET_UTF8 = 1, ZQ_CHARSET_EUC_KR = 2 };

#endif

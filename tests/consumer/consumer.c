/* A program of an image build: links the installed library and the
 * installed platform stand-in, sets one T-CONT and checks what was sent. */
#include <ke_omci_tapi/ke_omci_tapi.h>
#include <kestub_c.h>
#include <stdio.h>
#include <string.h>

int main(void)
{
    const char *name = NULL;
    uint32_t sent[2] = {0, 0};

    kestub_reset();
    if (ke_omci_tapi_init() != 0) {
        fprintf(stderr, "init did not return 0\n");
        return 1;
    }
    kestub_ipc_script("ke_ke_sml_gpon_tcont_set_call", 0, NULL, 0);
    if (ke_omci_tapi_tcont_set(3, 0x101) != 0) {
        fprintf(stderr, "tcont_set failed\n");
        return 1;
    }
    if (kestub_ipc_call_count() != 1 || kestub_ipc_call_at(0, &name, sent, sizeof sent) != 8 ||
        strcmp(name, "ke_ke_sml_gpon_tcont_set_call") != 0 || sent[0] != 3 || sent[1] != 0x101) {
        fprintf(stderr, "unexpected request\n");
        return 1;
    }
    puts("consumer: T-CONT 3 set, 8 bytes sent as expected");
    return 0;
}

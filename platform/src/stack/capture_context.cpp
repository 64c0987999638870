// RtlCaptureContext, which must not change a register before it has stored it.
#include <winnt.h>

#if defined(__x86_64__)

__asm__(R"(
    .text
    .globl qxp_RtlCaptureContext
    .type qxp_RtlCaptureContext, @function
qxp_RtlCaptureContext:
    .cfi_startproc
    endbr64
    movl $0x0010000F, 0x30(%rdi)    # ContextFlags: control, integer, segments, floating point
    stmxcsr 0x34(%rdi)
    movw %cs, 0x38(%rdi)
    movw %ds, 0x3A(%rdi)
    movw %es, 0x3C(%rdi)
    movw %fs, 0x3E(%rdi)
    movw %gs, 0x40(%rdi)
    movw %ss, 0x42(%rdi)
    movq %rax, 0x78(%rdi)
    movq %rcx, 0x80(%rdi)
    movq %rdx, 0x88(%rdi)
    movq %rbx, 0x90(%rdi)
    movq %rbp, 0xA0(%rdi)
    movq %rsi, 0xA8(%rdi)
    movq %rdi, 0xB0(%rdi)
    movq %r8, 0xB8(%rdi)
    movq %r9, 0xC0(%rdi)
    movq %r10, 0xC8(%rdi)
    movq %r11, 0xD0(%rdi)
    movq %r12, 0xD8(%rdi)
    movq %r13, 0xE0(%rdi)
    movq %r14, 0xE8(%rdi)
    movq %r15, 0xF0(%rdi)
    pushfq
    .cfi_adjust_cfa_offset 8
    popq %rax
    .cfi_adjust_cfa_offset -8
    movl %eax, 0x44(%rdi)
    leaq 8(%rsp), %rax
    movq %rax, 0x98(%rdi)           # Rsp after the return
    movq (%rsp), %rax
    movq %rax, 0xF8(%rdi)           # Rip
    movq 0x78(%rdi), %rax
    fxsave 0x100(%rdi)
    ret
    .cfi_endproc
    .size qxp_RtlCaptureContext, . - qxp_RtlCaptureContext
)");

#elif defined(__aarch64__)

__asm__(R"(
    .text
    .globl qxp_RtlCaptureContext
    .type qxp_RtlCaptureContext, %function
qxp_RtlCaptureContext:
    .cfi_startproc
    hint #34
    stp x0, x1, [x0, #0x08]
    stp x2, x3, [x0, #0x18]
    stp x4, x5, [x0, #0x28]
    stp x6, x7, [x0, #0x38]
    stp x8, x9, [x0, #0x48]
    stp x10, x11, [x0, #0x58]
    stp x12, x13, [x0, #0x68]
    stp x14, x15, [x0, #0x78]
    stp x16, x17, [x0, #0x88]
    stp x18, x19, [x0, #0x98]
    stp x20, x21, [x0, #0xA8]
    stp x22, x23, [x0, #0xB8]
    stp x24, x25, [x0, #0xC8]
    stp x26, x27, [x0, #0xD8]
    stp x28, x29, [x0, #0xE8]
    str x30, [x0, #0xF8]
    mov x1, sp
    str x1, [x0, #0x100]
    str x30, [x0, #0x108]           // Pc
    mrs x1, nzcv
    mov w2, #0x7
    movk w2, #0x40, lsl #16
    stp w2, w1, [x0]                // ContextFlags and Cpsr
    add x1, x0, #0x110
    stp q0, q1, [x1, #0x00]
    stp q2, q3, [x1, #0x20]
    stp q4, q5, [x1, #0x40]
    stp q6, q7, [x1, #0x60]
    stp q8, q9, [x1, #0x80]
    stp q10, q11, [x1, #0xA0]
    stp q12, q13, [x1, #0xC0]
    stp q14, q15, [x1, #0xE0]
    add x1, x1, #0x100
    stp q16, q17, [x1, #0x00]
    stp q18, q19, [x1, #0x20]
    stp q20, q21, [x1, #0x40]
    stp q22, q23, [x1, #0x60]
    stp q24, q25, [x1, #0x80]
    stp q26, q27, [x1, #0xA0]
    stp q28, q29, [x1, #0xC0]
    stp q30, q31, [x1, #0xE0]
    mrs x1, fpcr
    mrs x2, fpsr
    add x3, x0, #0x310
    stp w1, w2, [x3]                // Fpcr and Fpsr
    ret
    .cfi_endproc
    .size qxp_RtlCaptureContext, . - qxp_RtlCaptureContext
)");

#endif

# Entry points of message sending and of faked C functions. Each saves the argument registers in a Frame (Runtime.h),
# asks C++ what to do, and then either jumps to an implementation with the registers as they were or returns the
# results that C++ left in the frame.
.text

# The unwind directives let a C++ exception of a hook pass through to the test.
.macro SAVE
  .cfi_startproc
  push %rbp
  .cfi_def_cfa_offset 16
  .cfi_offset %rbp, -16
  mov %rsp, %rbp
  .cfi_def_cfa_register %rbp
  sub $240, %rsp
  movaps %xmm0, (%rsp)
  movaps %xmm1, 16(%rsp)
  movaps %xmm2, 32(%rsp)
  movaps %xmm3, 48(%rsp)
  movaps %xmm4, 64(%rsp)
  movaps %xmm5, 80(%rsp)
  movaps %xmm6, 96(%rsp)
  movaps %xmm7, 112(%rsp)
  mov %rax, 128(%rsp)
  mov %rdi, 136(%rsp)
  mov %rsi, 144(%rsp)
  mov %rdx, 152(%rsp)
  mov %rcx, 160(%rsp)
  mov %r8, 168(%rsp)
  mov %r9, 176(%rsp)
  lea 16(%rbp), %rax
  mov %rax, 184(%rsp)
  mov %rsp, %rdi
.endm

.macro RETURN_RESULTS
  mov 192(%rsp), %rax
  mov 200(%rsp), %rdx
  movaps 208(%rsp), %xmm0
  movaps 224(%rsp), %xmm1
  leave
  ret
.endm

.macro SEND name, flags
  .globl \name
  .type \name, @function
\name:
  SAVE
  mov $\flags, %rsi
  call objc_runtime_dispatch
  test %rax, %rax
  jz 1f
  mov %rax, %r11
  movaps (%rsp), %xmm0
  movaps 16(%rsp), %xmm1
  movaps 32(%rsp), %xmm2
  movaps 48(%rsp), %xmm3
  movaps 64(%rsp), %xmm4
  movaps 80(%rsp), %xmm5
  movaps 96(%rsp), %xmm6
  movaps 112(%rsp), %xmm7
  mov 128(%rsp), %rax
  mov 136(%rsp), %rdi
  mov 144(%rsp), %rsi
  mov 152(%rsp), %rdx
  mov 160(%rsp), %rcx
  mov 168(%rsp), %r8
  mov 176(%rsp), %r9
  leave
  jmp *%r11
1:
  RETURN_RESULTS
  .cfi_endproc
.endm

SEND objc_msgSend, 0
SEND objc_msgSend_recorded, 1
SEND objc_msgSend_stret, 2
SEND objc_msgSend_stret_recorded, 3
SEND objc_msgSendSuper2, 4
SEND objc_msgSendSuper2_recorded, 5
SEND objc_msgSendSuper2_stret, 6
SEND objc_msgSendSuper2_stret_recorded, 7

# Faked C functions arrive here with their row of the facts in %rax.
.globl fake_function_entry
.type fake_function_entry, @function
fake_function_entry:
  SAVE
  mov 128(%rsp), %rsi
  call fake_function_called
  RETURN_RESULTS
  .cfi_endproc

# The Objective-C personality routine: exceptions are C++ exceptions here.
.globl __objc_personality_v0
.type __objc_personality_v0, @function
__objc_personality_v0:
  jmp __gxx_personality_v0@PLT

.section .note.GNU-stack,"",@progbits

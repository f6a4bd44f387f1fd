# objc_msgSend and its relatives for x86-64: find the method for the receiver and the selector, then jump to it with every
# argument as it came. A message to nil gives zero.

.macro save_arguments
    push %rbp
    mov %rsp, %rbp
    sub $192, %rsp
    mov %rdi, -8(%rbp)
    mov %rsi, -16(%rbp)
    mov %rdx, -24(%rbp)
    mov %rcx, -32(%rbp)
    mov %r8, -40(%rbp)
    mov %r9, -48(%rbp)
    mov %rax, -56(%rbp)
    movups %xmm0, -80(%rbp)
    movups %xmm1, -96(%rbp)
    movups %xmm2, -112(%rbp)
    movups %xmm3, -128(%rbp)
    movups %xmm4, -144(%rbp)
    movups %xmm5, -160(%rbp)
    movups %xmm6, -176(%rbp)
    movups %xmm7, -192(%rbp)
.endm

# Leaves the method that was found in r11.
.macro restore_arguments
    mov %rax, %r11
    mov -8(%rbp), %rdi
    mov -16(%rbp), %rsi
    mov -24(%rbp), %rdx
    mov -32(%rbp), %rcx
    mov -40(%rbp), %r8
    mov -48(%rbp), %r9
    mov -56(%rbp), %rax
    movups -80(%rbp), %xmm0
    movups -96(%rbp), %xmm1
    movups -112(%rbp), %xmm2
    movups -128(%rbp), %xmm3
    movups -144(%rbp), %xmm4
    movups -160(%rbp), %xmm5
    movups -176(%rbp), %xmm6
    movups -192(%rbp), %xmm7
    leave
.endm

.macro function name
    .globl \name
    .type \name, @function
\name:
.endm

.text

# rdi: the receiver, rsi: the selector.
function objc_msgSend
    test %rdi, %rdi
    jz .Lnil
    save_arguments
    call runtime_method_for@PLT
    restore_arguments
    jmp *%r11
.Lnil:
    xor %eax, %eax
    xor %edx, %edx
    xorps %xmm0, %xmm0
    xorps %xmm1, %xmm1
    ret

# The same for a large result: rdi is where it goes, rsi the receiver, rdx the selector.
function objc_msgSend_stret
    test %rsi, %rsi
    jz .Lnil_stret
    save_arguments
    mov -16(%rbp), %rdi
    mov -24(%rbp), %rsi
    call runtime_method_for@PLT
    restore_arguments
    jmp *%r11
.Lnil_stret:
    mov %rdi, %rax
    ret

# rdi: {receiver, the class whose superclass answers}, rsi: the selector.
function objc_msgSendSuper2
    save_arguments
    call runtime_method_of_super@PLT
    restore_arguments
    mov (%rdi), %rdi
    jmp *%r11

function objc_msgSendSuper2_stret
    save_arguments
    mov -16(%rbp), %rdi
    mov -24(%rbp), %rsi
    call runtime_method_of_super@PLT
    restore_arguments
    mov (%rsi), %rsi
    jmp *%r11

# What unwinds frames of Objective-C code; here exceptions are those of C++.
function __objc_personality_v0
    jmp __gxx_personality_v0@PLT

.section .note.GNU-stack, "", @progbits

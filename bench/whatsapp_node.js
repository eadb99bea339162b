// The same chat parsed by the npm package whatsapp-chat-parser, for comparison:
//   node bench/whatsapp_node.js bench/data/whatsapp/_chat.txt
const fs = require('fs');

async function main() {
  const { parseString } = await import('whatsapp-chat-parser');
  const text = fs.readFileSync(process.argv[2], 'utf8');
  const runs = Number(process.argv[3] || 3);
  for (let i = 0; i < runs; i++) {
    const start = process.hrtime.bigint();
    const messages = parseString(text);
    const ms = Number(process.hrtime.bigint() - start) / 1e6;
    console.log(`parse ${i + 1}: ${ms.toFixed(0)} ms, ${messages.length} messages`);
  }
}
main();
